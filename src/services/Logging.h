// The logging service: records events in the system's event log, under the source "Quill", or in a
// log file.
//
// A log file is UTF-8 with a byte order mark, one line an event: local time with its offset from
// UTC, type and text, separated by tabs. Control characters of the text, line breaks among them,
// are replaced by their pictures (U+2400 and on).
#pragma once

#include <string>

#include "core/Platform.h"

namespace quill {

enum class LogMode : SHORT {
    Automatic = 0, // the system's event log, or the file when that is refused
    File = 2,
    System = 3,
};

// The numbers of the system's event log.
enum class LogEventType : WORD { Error = 1, Warning = 2, Information = 4 };
inline constexpr LogEventType kDefaultEventType = LogEventType::Information;

class Logging {
public:
    // A relative file name lies in the folder Quill of the user's local application data.
    Logging(const std::wstring& file, LogMode mode) : file_(file), mode_(mode) {}

    // Returns when the event is recorded; throws AutomationError when it cannot be. A text that is
    // too long for one event of the system's log becomes several.
    void Log(const std::wstring& text, LogEventType type) const;

private:
    const std::wstring file_;
    const LogMode mode_;
};

// A seam: the entry to the event log.
struct EventLogFunctions {
    decltype(&ReportEventW) report = ReportEventW;
};

} // namespace quill
