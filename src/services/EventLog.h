// Quill.EventLog: records messages in the system's event log or in a log file.
#pragma once

#include "core/Automation.h"
#include "core/ErrorLevel.h"
#include "services/Logging.h"

namespace quill {

// ErrorLevel silences the errors of the arguments. Failures of the logging service are raised
// always: a message would be lost without a word.
class EventLog final : public WithErrorLevel<Automation<_EventLog>> {
public:
    STORED_PROPERTY(BSTR, File, file_)
    PROPERTY_SET_BY(SHORT, mode, mode_, EventLog::SetMode)
    ACTION(Report, (BSTR estring, LONG etype), estring, etype)

private:
    void SetMode(SHORT mode);
    void Report(const std::wstring& text, LONG icon);

    std::wstring file_;
    // Kept as published: reads as the logging service's number.
    SHORT mode_ = static_cast<SHORT>(LogMode::Automatic);
};

} // namespace quill
