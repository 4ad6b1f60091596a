// The classes in the test's own process, and what they ask of the platform, recorded and answered
// in its place, one line of text a call:
//
//     const Stage stage;
//     Stage::Record(L"box");             // the seams behind this name, for the calling thread
//     Stage::Answer(L"box", L"7");       // what the next calls return
//     Stage::Make(L"MessageBox") ...
//     Stage::Told();                     // "box 24 QUILL MessageBox: Save the changes?"
#pragma once

#include <string>
#include <vector>

#include "core/Platform.h"

namespace quill::test {

class Stage {
public:
    Stage() = default;
    ~Stage(); // the platform is back
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;

    // The names of the classes; a new object of one, made on the calling thread.
    static std::vector<std::wstring> Classes();
    static ComPtr<IDispatch> Make(std::wstring_view className);

    // The server in the registry, for the current user or for all.
    static void Register(bool currentUser, const std::wstring& program);
    static void Unregister(const std::wstring& program);

    static void Record(const std::wstring& name); // throws std::logic_error for an unknown one

    // Numbers, one for each call; the last one stays. Some are no calls: "version" is that of the
    // running system (601), "second" the milliseconds of a dialog's second.
    static void Answer(const std::wstring& name, const std::wstring& numbers);

    // The calls since the last time, with "; " between them. Long texts are cut, and end in their
    // length.
    static std::wstring Told();
};

} // namespace quill::test
