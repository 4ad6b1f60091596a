// Clients of 64 bits: the runner of tables gets here what it lacks without the classes in its own
// process, and a compiled client calls early-bound.
#include <gtest/gtest.h>

#include "support/LateBound.h"
#include "support/Listener.h"
#include "support/Stage.h"

#include "quill.h"

static_assert(sizeof(void*) == 8);

namespace quill::test {

ComPtr<IDispatch> Stage::Make(std::wstring_view)
{
    throw std::logic_error("objects come from the server");
}

Stage::~Stage() = default;

// Tables end at their `stage` here; an answer before it is for their other run.
void Stage::Record(const std::wstring&) {}
void Stage::Answer(const std::wstring&, const std::wstring&) {}
void Stage::Register(bool, const std::wstring&) {}
void Stage::Unregister(const std::wstring&) {}
std::wstring Stage::Told()
{
    return {};
}

// Those that are registered.
std::vector<std::wstring> Stage::Classes()
{
    std::vector<std::wstring> names;
    wchar_t key[256];
    for (DWORD index = 0; RegEnumKeyW(HKEY_CLASSES_ROOT, index, key, 256) == ERROR_SUCCESS; ++index)
        if (_wcsnicmp(key, L"Quill.", 6) == 0) names.emplace_back(key + 6);
    return names;
}

namespace {

template <class Interface>
ComPtr<Interface> Make(const CLSID& id)
{
    ComPtr<Interface> object;
    Check(CoCreateInstance(id, nullptr, CLSCTX_LOCAL_SERVER, IID_PPV_ARGS(&object)));
    return object;
}

TEST(EarlyBound, HearsAnEvent)
{
    const auto clock = Make<_Clock>(CLSID_Clock);
    const auto listener = Listener::Of(clock.Get());
    VARIANT_BOOL answer = VARIANT_FALSE;
    ASSERT_HRESULT_SUCCEEDED(clock->SetTimer(50, &answer));
    EXPECT_TRUE(PumpUntil([&] { return listener->heard.size() == 1; }, 20'000));
    ASSERT_HRESULT_SUCCEEDED(clock->get_Running(&answer));
    EXPECT_EQ(answer, VARIANT_FALSE);
}

// Text, arrays of Variants and dates, both ways.
TEST(EarlyBound, PassesValues)
{
    const auto aux = Make<_Aux>(CLSID_Aux);
    Variant parts;
    BSTR joined = nullptr;
    ASSERT_HRESULT_SUCCEEDED(
        aux->Split(MakeBstr(L"one,two,three").get(), MakeBstr(L",").get(), &parts));
    ASSERT_HRESULT_SUCCEEDED(aux->Join(&parts, MakeBstr(L"-").get(), &joined));
    EXPECT_EQ(Taken(joined), L"one-two-three");

    constexpr DATE kNoon = 36526.5; // 1 January 2000
    const auto time = Make<_DateTime>(CLSID_DateTime);
    DATE there = 0;
    DATE back = 0;
    ASSERT_HRESULT_SUCCEEDED(time->ConvertTime(kNoon, VARIANT_TRUE, &there));
    ASSERT_HRESULT_SUCCEEDED(time->ConvertTime(there, VARIANT_FALSE, &back));
    EXPECT_NEAR(back, kNoon, 1e-6);
}

// From a library that a 32-bit executable carries.
TEST(EarlyBound, FindsTypeInformation)
{
    ComPtr<ITypeInfo> info;
    TYPEATTR* type = nullptr;
    ASSERT_HRESULT_SUCCEEDED(Make<_Me>(CLSID_Me)->GetTypeInfo(0, LOCALE_NEUTRAL, &info));
    ASSERT_HRESULT_SUCCEEDED(info->GetTypeAttr(&type));
    EXPECT_TRUE(type->guid == __uuidof(_Me));
    info->ReleaseTypeAttr(type);
}

} // namespace
} // namespace quill::test
