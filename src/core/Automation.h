// The automation boundary: what all published classes have in common.
//
//     class Profile final : public Automation<_Profile> {
//     public:
//         STORED_PROPERTY(SHORT, ErrorLevel, errorLevel_, Within<0, 1>)
//         PROPERTY_SET_BY(BSTR, File, file_, Profile::SetFile)
//         METHOD(BSTR, GetSection, (BSTR section, VARIANT_BOOL cvt), section, cvt)
//     private:
//         std::wstring GetSection(const std::wstring& section, bool cvt) const;
//         void SetFile(const std::wstring& path);
//         std::wstring file_;
//     };
//
// A published method is one line; the method that does the work has the same name, takes and
// returns the types of Conversions.h and throws AutomationError. No exception leaves the boundary.
#pragma once

#include <functional>

#include "core/Conversions.h"
#include "core/ObjectLife.h"
#include "core/TypeLibrary.h"

// A read-only property: a field, or an expression that does not throw.
#define READ_ONLY_PROPERTY(type, name, field)                                                      \
    STDMETHODIMP get_##name(type* value) noexcept override                                         \
    {                                                                                              \
        return this->Get(value, field);                                                            \
    }

// The get and put of a stored property: its published type and name, the field that holds it, and
// the rule of Conversions.h under which a value is kept; without one every value is.
#define STORED_PROPERTY(type, name, field, ...)                                                    \
    READ_ONLY_PROPERTY(type, name, field)                                                          \
    STDMETHODIMP put_##name(type value) noexcept override                                          \
    {                                                                                              \
        return this->template Put<__VA_ARGS__>(field, value);                                      \
    }

// The put of a property, done by the plain method.
#define PROPERTY_PUT(type, name, method)                                                           \
    STDMETHODIMP put_##name(type value) noexcept override                                          \
    {                                                                                              \
        return this->Call(&method, value);                                                         \
    }

// A stored property whose put does more than store the value.
#define PROPERTY_SET_BY(type, name, field, method)                                                 \
    READ_ONLY_PROPERTY(type, name, field)                                                          \
    PROPERTY_PUT(type, name, method)

// A stored property that holds whatever a script assigns, or what a rule makes of it.
#define STORED_VARIANT(name, field, ...)                                                           \
    READ_ONLY_PROPERTY(VARIANT, name, field)                                                       \
    STDMETHODIMP put_##name(VARIANT* value) noexcept override                                      \
    {                                                                                              \
        return this->template Put<__VA_ARGS__>(field, value);                                      \
    }

// A published method with a result: the result's published type, the name, the published parameters
// in parentheses, and their names again. It calls the method of this name that takes plain types.
#define METHOD(type, name, parameters, ...)                                                        \
    STDMETHODIMP name(UNPACKED parameters __VA_OPT__(, ) type* result) noexcept override           \
    {                                                                                              \
        return this->Call(result, [this](auto... plain) {                                          \
            return this->name(plain...);                                                           \
        } __VA_OPT__(, ) __VA_ARGS__);                                                             \
    }

// The same without a result. Where the plain types are the published ones, the two methods would be
// one: such a method is written out, with its body given to Run.
#define ACTION(name, parameters, ...)                                                              \
    STDMETHODIMP name(UNPACKED parameters) noexcept override                                       \
    {                                                                                              \
        return this->Run([this](auto... plain) { this->name(plain...); } __VA_OPT__(, )            \
                             __VA_ARGS__);                                                         \
    }

// A published method that is a routine and does not use the object.
#define ROUTINE(type, name, routine, parameters, ...)                                              \
    STDMETHODIMP name(UNPACKED parameters __VA_OPT__(, ) type* result) noexcept override           \
    {                                                                                              \
        return this->Call(result, [](auto... plain) { return routine(plain...); } __VA_OPT__(, )   \
                                      __VA_ARGS__);                                                \
    }

// A read-only property that the method of its name computes.
#define COMPUTED_PROPERTY(type, name)                                                              \
    STDMETHODIMP get_##name(type* value) noexcept override                                         \
    {                                                                                              \
        return this->Call(value, [this] { return this->name(); });                                 \
    }

#define UNPACKED(...) __VA_ARGS__

namespace quill {

template <class Interface>
class Automation : public Interface,
                   public ISupportErrorInfo,
                   public IProvideClassInfo2,
                   public IExternalConnection {
public:
    Automation(const Automation&) = delete;
    Automation& operator=(const Automation&) = delete;

    // IUnknown
    STDMETHODIMP QueryInterface(REFIID id, void** object) noexcept override
    {
        if (!object) return E_POINTER;
        *object = FindInterface(id);
        if (!*object) return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() noexcept override { return ++references_; }
    STDMETHODIMP_(ULONG) Release() noexcept override
    {
        const ULONG left = --references_;
        if (left == 0) delete this;
        return left;
    }

    // IDispatch
    STDMETHODIMP GetTypeInfoCount(UINT* count) noexcept override
    {
        if (!count) return E_POINTER;
        *count = 1;
        return S_OK;
    }
    STDMETHODIMP GetTypeInfo(UINT index, LCID, ITypeInfo** info) noexcept override
    {
        if (!info) return E_POINTER;
        *info = nullptr;
        return index == 0 ? class_.interfaceInfo.CopyTo(info) : DISP_E_BADINDEX;
    }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID,
                               DISPID* ids) noexcept override
    {
        return class_.interfaceInfo->GetIDsOfNames(names, count, ids);
    }
    STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* parameters,
                        VARIANT* result, EXCEPINFO* exception, UINT* badArgument) noexcept override
    {
        return class_.interfaceInfo->Invoke(static_cast<Interface*>(this), id, flags, parameters,
                                            result, exception, badArgument);
    }

    // ISupportErrorInfo
    STDMETHODIMP InterfaceSupportsErrorInfo(REFIID id) noexcept override
    {
        return id == __uuidof(Interface) ? S_OK : S_FALSE;
    }

    // IProvideClassInfo2
    STDMETHODIMP GetClassInfo(ITypeInfo** info) noexcept override
    {
        return info ? class_.classInfo.CopyTo(info) : E_POINTER;
    }
    STDMETHODIMP GetGUID(DWORD kind, GUID* id) noexcept override
    {
        if (!id) return E_POINTER;
        *id = GUID_NULL;
        if (kind != GUIDKIND_DEFAULT_SOURCE_DISP_IID) return E_INVALIDARG;
        *id = class_.eventsId;
        return class_.eventsId == GUID_NULL ? E_UNEXPECTED : S_OK;
    }

    // IExternalConnection: the platform counts the clients' references here.
    STDMETHODIMP_(DWORD) AddConnection(DWORD type, DWORD) noexcept override
    {
        return type & EXTCONN_STRONG ? clients_.Add() : 0;
    }
    STDMETHODIMP_(DWORD) ReleaseConnection(DWORD type, DWORD, BOOL) noexcept override
    {
        return type & EXTCONN_STRONG ? clients_.Remove() : 0;
    }

protected:
    Automation() : class_(ClassOf()) {}
    virtual ~Automation() = default;

    // The interface of this identifier, or null. A mixin adds its own to those of its base.
    virtual void* FindInterface(REFIID id) noexcept
    {
        if (id == IID_IUnknown || id == IID_IDispatch || id == __uuidof(Interface))
            return static_cast<Interface*>(this);
        if (id == IID_ISupportErrorInfo) return static_cast<ISupportErrorInfo*>(this);
        if (id == IID_IProvideClassInfo || id == IID_IProvideClassInfo2)
            return static_cast<IProvideClassInfo2*>(this);
        if (id == IID_IExternalConnection) return static_cast<IExternalConnection*>(this);
        return nullptr;
    }

    // A published method: runs the body, a lambda or a routine, on the converted arguments, and
    // converts its result into `out`.
    template <class Out, class Body, class... Arguments>
    HRESULT Call(Out* out, Body&& body, Arguments... arguments) noexcept
    {
        if (!out) return E_POINTER;
        *out = Out{};
        return Guarded([&] { Return(out, body(Argument<Arguments>{arguments}...)); });
    }

    // The same for a method of the object.
    template <class Out, class Class, class Method, class... Arguments>
    HRESULT Call(Out* out, Method Class::*method, Arguments... arguments) noexcept
    {
        const auto body = [&](auto... plain) {
            return std::invoke(method, static_cast<Class&>(*this), plain...);
        };
        return Call(out, body, arguments...);
    }

    // A published method without a result, and the put of a property that is more than stored.
    template <class Body, class... Arguments>
    HRESULT Run(Body&& body, Arguments... arguments) noexcept
    {
        return Guarded([&] { body(Argument<Arguments>{arguments}...); });
    }

    // The same for a method of the object.
    template <class Class, class Method, class... Arguments>
    HRESULT Call(Method Class::*method, Arguments... arguments) noexcept
    {
        return Guarded([&] {
            std::invoke(method, static_cast<Class&>(*this), Argument<Arguments>{arguments}...);
        });
    }

    // The get of a stored property.
    template <class Out, class Field>
    HRESULT Get(Out* out, const Field& field) noexcept
    {
        if (!out) return E_POINTER;
        *out = Out{};
        return Guarded([&] { Return(out, field); });
    }

    // The put of a stored property, under a rule of Conversions.h.
    template <class Rule = AsGiven, class Field, class Value>
    HRESULT Put(Field& field, Value value) noexcept
    {
        return Guarded(
            [&] { field = Rule::Apply(field, static_cast<Field>(Argument<Value>{value})); });
    }

    // True when the clients that held this object are gone; the platform reports killed ones after
    // a while. A call that waits for its user then ends as if cancelled.
    bool ClientsGone() const noexcept { return clients_.Gone(); }

    const PublishedClass& Published() const noexcept { return class_; }

private:
    static const PublishedClass& ClassOf()
    {
        static const PublishedClass& found = FindPublishedClass(__uuidof(Interface));
        return found;
    }

    template <class Body>
    HRESULT Guarded(Body&& body) noexcept
    {
        // The object outlives a call that pumps messages, whatever its client does meanwhile.
        const ComPtr<Interface> self(this);
        try {
            body();
            return S_OK;
        } catch (...) {
            return ReportException(__uuidof(Interface), class_.source);
        }
    }

    const ServerLock lock_;
    const ApartmentLoad load_;
    const PublishedClass& class_;
    ClientCount clients_;
    ULONG references_ = 0; // used by the object's own apartment only
};

} // namespace quill
