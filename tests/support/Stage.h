// What the classes ask of the platform, recorded and answered in its place, one line of text a
// call:
//
//     Stage stage;
//     stage.Record(L"box");             // the seams behind this name, for the calling thread
//     stage.Answer(L"box", L"7");       // what the next calls return
//     ...
//     stage.Told();                     // "box 24 QUILL MessageBox: Shall it be?"
#pragma once

#include <string>

namespace quill::test {

class Stage {
public:
    Stage() = default;
    ~Stage(); // the platform is back
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;

    void Record(const std::wstring& name); // throws std::logic_error for an unknown one

    // Numbers, one for each call; the last one stays. Some are no calls: "version" is that of the
    // running system (601), "second" the milliseconds of a dialog's second.
    void Answer(const std::wstring& name, const std::wstring& numbers);

    // The calls since the last time, with "; " between them. Long texts are cut, and end in their
    // length.
    std::wstring Told();
};

} // namespace quill::test
