#include "services/EventLog.h"

#include "core/Catalogue.h"

namespace quill {

namespace {

constexpr PublishedError kNoLogText{ErrorNumber(0x80040335), L"Missing event log string."};
constexpr PublishedError kInvalidLogMode{ErrorNumber(0x80040336), L"Invalid log mode."};

constexpr wchar_t kDefaultFile[] = L"quill.log";

LogEventType TypeOfIcon(LONG icon) noexcept
{
    switch (icon) {
    case MB_ICONHAND: return LogEventType::Error;
    case MB_ICONEXCLAMATION: return LogEventType::Warning;
    case MB_ICONASTERISK: return LogEventType::Information;
    default: return kDefaultEventType;
    }
}

} // namespace

CREATABLE(EventLog)

void EventLog::SetMode(SHORT mode)
{
    static constexpr LogMode kModes[] = {LogMode::Automatic, LogMode::System, LogMode::File};
    if (InRange(mode, 0, 2))
        mode_ = static_cast<SHORT>(kModes[mode]);
    else
        Refuse(kInvalidLogMode);
}

void EventLog::Report(const std::wstring& text, LONG icon)
{
    // Kept as published: where the error stays quiet, the empty text is recorded.
    if (text.empty()) Refuse(kNoLogText);
    const Logging service(file_.empty() ? kDefaultFile : file_, static_cast<LogMode>(mode_));
    service.Log(text, TypeOfIcon(icon));
}

} // namespace quill
