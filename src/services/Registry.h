// Quill.Registry: reads and searches the registry.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "core/Automation.h"
#include "services/registryfn.h"

namespace quill {

// Paths begin with the name of a root key, long or short. Raises no errors of its own: ErrorCode
// is the result of the last call.
class Registry final : public Automation<_Registry> {
public:
    STORED_PROPERTY(LONG, Access64, access64_, Within<0, 2>)
    STORED_PROPERTY(LONG, Continue, continue_, Within<0, 64>)
    STORED_PROPERTY(VARIANT_BOOL, ConvertArr, convertArr_)
    STORED_PROPERTY(VARIANT_BOOL, ConvertStr, convertStr_)
    READ_ONLY_PROPERTY(LONG, ErrorCode, errorCode_)
    STORED_PROPERTY(LONG, ItemType, itemType_, Within<0, 2>)
    STORED_PROPERTY(LONG, KeyLevels, keyLevels_, Within<1, 64>)
    METHOD(LONG, GetItems, (BSTR sPath, VARIANT* vItems), sPath, vItems)
    METHOD(BSTR, Search, (BSTR sItem, BSTR sPath), sItem, sPath)
    METHOD(VARIANT, RegRead, (BSTR sItem, BSTR sVal), sItem, sVal)
    METHOD(VARIANT, RegRead1, (BSTR sItem, BSTR), sItem)
    METHOD(LONG, RegEntryExists, (BSTR sItem), sItem)
    METHOD(LONG, RegEntryExists1, (BSTR sItem), sItem)

private:
    enum Code : LONG { kInvalidPath = 801, kNothingThere = 802 };
    enum Entry : LONG { kNothing, kKey, kValue };

    struct Place {
        HKEY root;
        std::wstring path; // below the root
    };

    LONG GetItems(const std::wstring& path, VARIANT& items);
    std::wstring Search(const std::wstring& item, const std::wstring& path);
    Variant RegRead(const std::wstring& item, const std::wstring& valueName);
    Variant RegRead1(const std::wstring& item) { return RegRead(item, {}); }
    LONG RegEntryExists(const std::wstring& item);
    LONG RegEntryExists1(const std::wstring& item);

    std::optional<Place> PlaceOf(const std::wstring& path);
    REGSAM Access() const;
    RegistryItem Item() const;
    bool IsKey(const Place& entry) const;
    LONG FindValueAt(const Place& key, const std::wstring& name) const;
    Variant Convert(const RegistryValue& value) const;
    Variant ConvertBytes(const std::vector<BYTE>& bytes) const;

    LONG access64_ = 0;
    LONG continue_ = 0;
    bool convertArr_ = true; // arrays hold Variants
    bool convertStr_ = true; // references are expanded, lists are split
    LONG errorCode_ = 0;
    LONG itemType_ = 0;
    LONG keyLevels_ = 4;
};

} // namespace quill
