// Quill.Aux: what script languages lack for text, bytes, arrays, URLs and paths.
#pragma once

#include "core/Automation.h"
#include "services/Bytes.h"
#include "services/Hashes.h"
#include "services/Lists.h"
#include "services/Paths.h"
#include "services/Urls.h"

namespace quill {

// Each member is the routine of its name. Raises no errors of its own: what a member cannot use
// gives an empty result.
class Aux final : public Automation<_Aux> {
public:
    STDMETHODIMP Hex64(CURRENCY amount, BSTR* result) noexcept override
    {
        return Call(result, &Aux::HexOfBits, amount);
    }
    STDMETHODIMP FormatByteSize(CURRENCY bytes, BSTR* result) noexcept override
    {
        return Call(result, &Aux::SizeText, bytes);
    }
    STDMETHODIMP TextToBytes(BSTR chars, LONG codepage, VARIANT* result) noexcept override
    {
        return Call(result, &quill::TextToBytes, chars, codepage);
    }
    STDMETHODIMP BytesToText(VARIANT* data, LONG codepage, BSTR* result) noexcept override
    {
        return Call(result, &quill::BytesToText, data, codepage);
    }
    STDMETHODIMP EncodeHex(VARIANT* data, BSTR* result) noexcept override
    {
        return Call(result, &quill::EncodeHex, data);
    }
    STDMETHODIMP DecodeHex(BSTR chars, VARIANT* result) noexcept override
    {
        return Call(result, &quill::DecodeHex, chars);
    }
    STDMETHODIMP EncodeBase64(VARIANT* data, BSTR* result) noexcept override
    {
        return Call(result, &quill::EncodeBase64, data);
    }
    STDMETHODIMP DecodeBase64(BSTR chars, VARIANT* result) noexcept override
    {
        return Call(result, &quill::DecodeBase64, chars);
    }
    STDMETHODIMP Hash(VARIANT* data, BSTR algorithm, BSTR* result) noexcept override
    {
        return Call(result, &quill::Hash, data, algorithm);
    }
    STDMETHODIMP HashFile(BSTR filespec, BSTR algorithm, BSTR* result) noexcept override
    {
        return Call(result, &quill::HashFile, filespec, algorithm);
    }
    STDMETHODIMP VariantArray(VARIANT* items, VARIANT* result) noexcept override
    {
        return Call(result, &quill::VariantArray, items);
    }
    STDMETHODIMP TypedArray(VARIANT* items, LONG vartype, VARIANT* result) noexcept override
    {
        return Call(result, &quill::TypedArray, items, vartype);
    }
    STDMETHODIMP Sort(VARIANT* items, VARIANT_BOOL numeric, VARIANT_BOOL descending,
                      VARIANT* result) noexcept override
    {
        return Call(result, &quill::Sort, items, numeric, descending);
    }
    STDMETHODIMP Unique(VARIANT* items, VARIANT_BOOL ignorecase, VARIANT* result) noexcept override
    {
        return Call(result, &quill::Unique, items, ignorecase);
    }
    STDMETHODIMP Find(VARIANT* items, VARIANT* value, LONG start, VARIANT_BOOL ignorecase,
                      LONG* result) noexcept override
    {
        return Call(result, &quill::Find, items, value, start, ignorecase);
    }
    STDMETHODIMP Join(VARIANT* items, BSTR separator, BSTR* result) noexcept override
    {
        return Call(result, &quill::Join, items, separator);
    }
    STDMETHODIMP Split(BSTR chars, BSTR separator, VARIANT* result) noexcept override
    {
        return Call(result, &quill::Split, chars, separator);
    }
    STDMETHODIMP EncodeUrl(BSTR chars, VARIANT_BOOL plus, BSTR* result) noexcept override
    {
        return Call(result, &quill::EncodeUrl, chars, plus);
    }
    STDMETHODIMP DecodeUrl(BSTR chars, VARIANT_BOOL plus, BSTR* result) noexcept override
    {
        return Call(result, &quill::DecodeUrl, chars, plus);
    }
    STDMETHODIMP SplitUrl(BSTR url, VARIANT* result) noexcept override
    {
        return Call(result, &quill::SplitUrl, url);
    }
    STDMETHODIMP CombineUrl(BSTR base, BSTR relative, BSTR* result) noexcept override
    {
        return Call(result, &quill::CombineUrl, base, relative);
    }
    STDMETHODIMP PathToUrl(BSTR filespec, BSTR* result) noexcept override
    {
        return Call(result, &quill::PathToUrl, filespec);
    }
    STDMETHODIMP UrlToPath(BSTR url, BSTR* result) noexcept override
    {
        return Call(result, &quill::UrlToPath, url);
    }
    STDMETHODIMP CombinePath(BSTR folder, BSTR name, BSTR* result) noexcept override
    {
        return Call(result, &quill::CombinePath, folder, name);
    }
    STDMETHODIMP FullPath(BSTR filespec, BSTR folder, BSTR* result) noexcept override
    {
        return Call(result, &quill::FullPath, filespec, folder);
    }
    STDMETHODIMP RelativePath(BSTR filespec, BSTR folder, BSTR* result) noexcept override
    {
        return Call(result, &quill::RelativePath, filespec, folder);
    }
    STDMETHODIMP CompactPath(BSTR filespec, LONG width, BSTR* result) noexcept override
    {
        return Call(result, &quill::CompactPath, filespec, width);
    }
    STDMETHODIMP LongPath(BSTR filespec, BSTR* result) noexcept override
    {
        return Call(result, &quill::LongPath, filespec);
    }
    STDMETHODIMP ShortPath(BSTR filespec, BSTR* result) noexcept override
    {
        return Call(result, &quill::ShortPath, filespec);
    }
    STDMETHODIMP MatchName(BSTR name, BSTR pattern, VARIANT_BOOL* result) noexcept override
    {
        return Call(result, &quill::MatchName, name, pattern);
    }
    STDMETHODIMP ExpandEnvironment(BSTR chars, BSTR* result) noexcept override
    {
        return Call(result, &quill::ExpandEnvironment, chars);
    }
    STDMETHODIMP SplitCommandLine(BSTR commandline, VARIANT* result) noexcept override
    {
        return Call(result, &quill::SplitCommandLine, commandline);
    }

private:
    std::wstring HexOfBits(CURRENCY amount) const;
    std::wstring SizeText(CURRENCY bytes) const;
};

} // namespace quill
