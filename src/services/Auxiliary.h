// Quill.Aux: what script languages lack for text, bytes, arrays, URLs and paths.
#pragma once

#include "core/Automation.h"
#include "core/Paths.h"
#include "services/Bytes.h"
#include "services/Hashes.h"
#include "services/Lists.h"
#include "services/Urls.h"

namespace quill {

// Each member is the routine of its name. Raises no errors of its own: what a member cannot use
// gives an empty result.
class Aux final : public Automation<_Aux> {
public:
    METHOD(BSTR, Hex64, (CURRENCY amount), amount)
    METHOD(BSTR, FormatByteSize, (CURRENCY bytes), bytes)
    ROUTINE(VARIANT, TextToBytes, quill::TextToBytes, (BSTR chars, LONG codepage), chars, codepage)
    ROUTINE(BSTR, BytesToText, quill::BytesToText, (VARIANT * data, LONG codepage), data, codepage)
    ROUTINE(BSTR, EncodeHex, quill::EncodeHex, (VARIANT * data), data)
    ROUTINE(VARIANT, DecodeHex, quill::DecodeHex, (BSTR chars), chars)
    ROUTINE(BSTR, EncodeBase64, quill::EncodeBase64, (VARIANT * data), data)
    ROUTINE(VARIANT, DecodeBase64, quill::DecodeBase64, (BSTR chars), chars)
    ROUTINE(BSTR, Hash, quill::Hash, (VARIANT * data, BSTR algorithm), data, algorithm)
    ROUTINE(BSTR, HashFile, quill::HashFile, (BSTR filespec, BSTR algorithm), filespec, algorithm)
    ROUTINE(VARIANT, VariantArray, quill::VariantArray, (VARIANT * items), items)
    ROUTINE(VARIANT, TypedArray, quill::TypedArray, (VARIANT * items, LONG vartype), items, vartype)
    ROUTINE(VARIANT, Sort, quill::Sort,
            (VARIANT * items, VARIANT_BOOL numeric, VARIANT_BOOL descending), items, numeric,
            descending)
    ROUTINE(VARIANT, Unique, quill::Unique, (VARIANT * items, VARIANT_BOOL ignorecase), items,
            ignorecase)
    ROUTINE(LONG, Find, quill::Find,
            (VARIANT * items, VARIANT* value, LONG start, VARIANT_BOOL ignorecase), items, value,
            start, ignorecase)
    ROUTINE(BSTR, Join, quill::Join, (VARIANT * items, BSTR separator), items, separator)
    ROUTINE(VARIANT, Split, quill::Split, (BSTR chars, BSTR separator), chars, separator)
    ROUTINE(BSTR, EncodeUrl, quill::EncodeUrl, (BSTR chars, VARIANT_BOOL plus), chars, plus)
    ROUTINE(BSTR, DecodeUrl, quill::DecodeUrl, (BSTR chars, VARIANT_BOOL plus), chars, plus)
    ROUTINE(VARIANT, SplitUrl, quill::SplitUrl, (BSTR url), url)
    ROUTINE(BSTR, CombineUrl, quill::CombineUrl, (BSTR base, BSTR relative), base, relative)
    ROUTINE(BSTR, PathToUrl, quill::PathToUrl, (BSTR filespec), filespec)
    ROUTINE(BSTR, UrlToPath, quill::UrlToPath, (BSTR url), url)
    ROUTINE(BSTR, CombinePath, quill::CombinePath, (BSTR folder, BSTR name), folder, name)
    ROUTINE(BSTR, FullPath, quill::FullPath, (BSTR filespec, BSTR folder), filespec, folder)
    ROUTINE(BSTR, RelativePath, quill::RelativePath, (BSTR filespec, BSTR folder), filespec, folder)
    ROUTINE(BSTR, CompactPath, quill::CompactPath, (BSTR filespec, LONG width), filespec, width)
    ROUTINE(BSTR, LongPath, quill::LongPath, (BSTR filespec), filespec)
    ROUTINE(BSTR, ShortPath, quill::ShortPath, (BSTR filespec), filespec)
    ROUTINE(VARIANT_BOOL, MatchName, quill::MatchName, (BSTR name, BSTR pattern), name, pattern)
    ROUTINE(BSTR, ExpandEnvironment, quill::ExpandEnvironment, (BSTR chars), chars)
    ROUTINE(VARIANT, SplitCommandLine, quill::SplitCommandLine, (BSTR commandline), commandline)

private:
    std::wstring Hex64(CURRENCY amount) const;
    std::wstring FormatByteSize(CURRENCY bytes) const;
};

} // namespace quill
