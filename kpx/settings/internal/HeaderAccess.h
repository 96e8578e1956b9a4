#pragma once

#include "kpx/config/CFGHeader.h"
#include "kpx/settings/engine/GeneratedClass.h"

namespace kpx::detail {

// CFGHeader belongs to the layer below and is written by hand; so is what the catalogue says of
// it. The headers of tables have these settings too.

inline constexpr SettingDef headerSettings[] = {
    {.key = KeyLiteral(u"Class"),
     .type = ColumnType::text,
     .caption = {.literal = u"Class "},
     .group = {.literal = u"64"}},
    {.key = KeyLiteral(u"Description"),
     .type = ColumnType::text,
     .caption = {.literal = u"Beschreibung"},
     .group = {.literal = u"64"}},
};

inline constexpr SettingAccess headerAccesses[] = {
    access<&CFGHeader::getClass, &CFGHeader::setClass>(headerSettings[0], u"getClass", u"setClass"),
    access<&CFGHeader::getDescription, &CFGHeader::setDescription>(
        headerSettings[1], u"getDescription", u"setDescription"),
};

}  // namespace kpx::detail
