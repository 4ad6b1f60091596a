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

// By the type library that a 32-bit executable carries.
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

// Text and arrays of Variants, both ways.
TEST(EarlyBound, PassesValues)
{
    const auto aux = Make<_Aux>(CLSID_Aux);
    const Bstr list = MakeBstr(L"one,two,three");
    const Bstr comma = MakeBstr(L",");
    Variant parts;
    BSTR joined = nullptr;
    ASSERT_HRESULT_SUCCEEDED(aux->Split(list.get(), comma.get(), &parts));
    ASSERT_HRESULT_SUCCEEDED(aux->Join(&parts, comma.get(), &joined));
    EXPECT_EQ(Taken(joined), list.get());
}

} // namespace
} // namespace quill::test
