// Properties of the classes whose object shows a window.
#pragma once

// The get and put of a stored property that takes effect at once: its published type and name, the
// field that holds it, what is done where the window is there, as `form`, and the rule of
// Conversions.h under which a value is kept; without one every value is.
#define SHOWN_PROPERTY(type, name, field, show, ...)                                               \
    READ_ONLY_PROPERTY(type, name, field)                                                          \
    STDMETHODIMP put_##name(type value) noexcept override                                          \
    {                                                                                              \
        const HRESULT kept = this->template Put<__VA_ARGS__>(field, value);                        \
        if (FAILED(kept) || !Shown()) return kept;                                                 \
        return this->Run([this, &form = *Shown()] { show; });                                      \
    }
