// The entry of the GoogleTest programs: a thread that is an apartment of the server.
#include <gtest/gtest.h>

#include <cstdio>

#include "core/Apartment.h"

namespace {

LONG WINAPI ReportCrash(EXCEPTION_POINTERS* pointers)
{
    std::printf("crashed: exception 0x%08lx at %p\n", pointers->ExceptionRecord->ExceptionCode,
                pointers->ExceptionRecord->ExceptionAddress);
    std::fflush(stdout);
    TerminateProcess(GetCurrentProcess(), 3);
    return EXCEPTION_EXECUTE_HANDLER;
}

} // namespace

int wmain(int count, wchar_t** arguments)
{
    SetUnhandledExceptionFilter(ReportCrash);
    testing::InitGoogleTest(&count, arguments);
    const quill::ApartmentRecord record;
    return RUN_ALL_TESTS();
}
