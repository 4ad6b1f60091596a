#include "support/Engine.h"

#include <map>
#include <utility>

#include "support/CountedDispatch.h"

namespace quill::test {

// What the engine asks of its host.
class Engine::Site final : public Counted<IActiveScriptSite> {
public:
    explicit Site(Maker maker) : maker_(std::move(maker)) {}

    bool IsAlso(REFIID id) const noexcept override { return id == IID_IActiveScriptSite; }
    STDMETHODIMP GetLCID(LCID*) noexcept override { return E_NOTIMPL; }
    STDMETHODIMP GetItemInfo(LPCOLESTR name, DWORD wanted, IUnknown** object,
                             ITypeInfo** info) noexcept override
    {
        if (info) *info = nullptr;
        if (!(wanted & SCRIPTINFO_IUNKNOWN)) return S_OK;
        *object = nullptr;
        try {
            ComPtr<IDispatch>& made = objects_[name];
            if (!made) made = maker_(name);
            return made.CopyTo(IID_IUnknown, reinterpret_cast<void**>(object));
        } catch (...) {
            return TYPE_E_ELEMENTNOTFOUND;
        }
    }
    STDMETHODIMP GetDocVersionString(BSTR*) noexcept override { return E_NOTIMPL; }
    STDMETHODIMP OnScriptTerminate(const VARIANT*, const EXCEPINFO*) override { return S_OK; }
    STDMETHODIMP OnStateChange(SCRIPTSTATE) noexcept override { return S_OK; }
    STDMETHODIMP OnScriptError(IActiveScriptError* error) noexcept override
    {
        EXCEPINFO raised{};
        if (FAILED(error->GetExceptionInfo(&raised))) return S_OK;
        SysFreeString(raised.bstrHelpFile);
        error_ = {static_cast<unsigned>(raised.wCode ? raised.wCode : raised.scode),
                  Taken(raised.bstrSource), Taken(raised.bstrDescription)};
        return S_OK;
    }
    STDMETHODIMP OnEnterScript() noexcept override { return S_OK; }
    STDMETHODIMP OnLeaveScript() noexcept override { return S_OK; }

    ScriptError TakeError() { return std::exchange(error_, {}); }
    void Forget() { objects_.clear(); }

private:
    const Maker maker_;
    std::map<std::wstring, ComPtr<IDispatch>> objects_;
    ScriptError error_;
};

Engine::Engine(Maker maker, const wchar_t* language) : site_(new Site(std::move(maker)))
{
    CLSID id;
    ComPtr<IActiveScriptParse> parse;
    Check(CLSIDFromProgID(language, &id));
    Check(CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&script_)));
    Check(script_.As(&parse));
    Check(parse->InitNew());
    Check(script_->SetScriptSite(site_.Get()));
    Check(script_->SetScriptState(SCRIPTSTATE_CONNECTED));
}

Engine::~Engine()
{
    script_->Close();
    site_->Forget();
}

void Engine::Add(const std::wstring& name, bool global)
{
    Check(script_->AddNamedItem(name.c_str(), SCRIPTITEM_ISVISIBLE |
                                                  (global ? DWORD{SCRIPTITEM_GLOBALMEMBERS} : 0)));
}

void Engine::Call(const std::wstring& procedure, const std::vector<Variant>& arguments)
{
    ComPtr<IDispatch> globals;
    Check(script_->GetScriptDispatch(nullptr, &globals));
    std::wstring name = procedure;
    LPOLESTR names = name.data();
    DISPID id = DISPID_UNKNOWN;
    if (FAILED(globals->GetIDsOfNames(IID_NULL, &names, 1, LOCALE_INVARIANT, &id))) return;
    std::vector<VARIANT> given(arguments.rbegin(), arguments.rend()); // borrowed
    DISPPARAMS parameters{given.data(), nullptr, static_cast<UINT>(given.size()), 0};
    Check(globals->Invoke(id, IID_NULL, LOCALE_INVARIANT, DISPATCH_METHOD, &parameters, nullptr,
                          nullptr, nullptr));
}

Outcome Engine::Parse(const std::wstring& text, DWORD flags)
{
    ComPtr<IActiveScriptParse> parse;
    Check(script_.As(&parse));
    Outcome outcome;
    const HRESULT result =
        parse->ParseScriptText(text.c_str(), nullptr, nullptr, nullptr, 0, 0, flags,
                               flags & SCRIPTTEXT_ISEXPRESSION ? &outcome.value : nullptr, nullptr);
    outcome.error = site_->TakeError();
    if (FAILED(result) && outcome.error.number == 0)
        outcome.error.number = static_cast<unsigned>(result);
    return outcome;
}

} // namespace quill::test
