#include "services/Auxiliary.h"

#include "core/Catalogue.h"
#include "services/int64fn.h"

namespace quill {

CREATABLE(Aux)

std::wstring Aux::Hex64(CURRENCY amount) const
{
    return quill::Hex64(amount.Lo, static_cast<std::uint32_t>(amount.Hi));
}

std::wstring Aux::FormatByteSize(CURRENCY bytes) const
{
    wchar_t text[64];
    if (bytes.int64 < 0 || !StrFormatByteSizeW(CurrencyToCount(bytes), text, std::size(text)))
        return {};
    return text;
}

} // namespace quill
