#pragma once

#include <array>
#include <cstddef>
#include <tuple>

#include "kpx/config/CDBObject.h"
#include "kpx/config/CFGCodedValue.h"
#include "kpx/config/CFGCol.h"
#include "kpx/config/CFGCommand.h"
#include "kpx/config/CFGConfig.h"
#include "kpx/config/CFGRange.h"
#include "kpx/config/CFGTable.h"
#include "kpx/config/CFGValue.h"
#include "kpx/config/CJob.h"
#include "kpx/config/CProject.h"
#include "kpx/config/CUser.h"
#include "kpx/config/Field.h"

namespace kpx {

// What stands in stored files, stated here alone: writing, reading, checking a file and its form
// as JSON all go by these tables. Their order is that of the attributes in a file.

/// The record header, with which every element begins.
template <>
inline constexpr std::tuple fieldsOf<CDBObject>{
    Field(u"ObjectID", &CDBObject::ObjectID),
    Field(u"UserChangedID", &CDBObject::UserChangedID),
    Field(u"UserCreatedID", &CDBObject::UserCreatedID),
    Field(u"changed", &CDBObject::changed),
    Field(u"created", &CDBObject::created),
    Field(u"TransID", &CDBObject::TransID),
};

// --- configurations ---------------------------------------------------------------------------

template <>
inline constexpr std::tuple fieldsOf<CFGConfig>{
    Field(u"Name", &CFGConfig::Name),
    Field(u"ClassID", &CFGConfig::ClassID),
};
template <>
inline constexpr std::tuple fieldsOf<CFGClass>{
    Field(u"Name", &CFGClass::Name),
};
template <>
inline constexpr std::tuple fieldsOf<CFGCol>{
    Field(u"ClassID", &CFGCol::ClassID),   Field(u"Type", &CFGCol::Type),
    Field(u"Name", &CFGCol::Name),         Field(u"Caption", &CFGCol::Caption),
    Field(u"Category", &CFGCol::Category), Field(u"Length", &CFGCol::Length),
    Field(u"Prec", &CFGCol::Prec),         Field(u"Nullable", &CFGCol::Nullable),
    Field(u"Empty", &CFGCol::Empty),       Field(u"Default", &CFGCol::Default),
    Field(u"Unit", &CFGCol::Unit),
};
template <>
inline constexpr std::tuple fieldsOf<CFGValue>{
    Field(u"Value", &CFGValue::Value),
    Field(u"ColID", &CFGValue::ColID),
    Field(u"RowID", &CFGValue::RowID),
    Field(u"Data", &CFGValue::Data),
};

// --- what a column allows and offers ----------------------------------------------------------

template <>
inline constexpr std::tuple fieldsOf<CFGCodedValue>{
    Field(u"ColID", &CFGCodedValue::ColID),
    Field(u"Value", &CFGCodedValue::Value),
    Field(u"Data", &CFGCodedValue::Data),
};
template <>
inline constexpr std::tuple fieldsOf<CFGRange>{
    Field(u"ColID", &CFGRange::ColID),
    Field(u"RangeFrom", &CFGRange::RangeFrom),
    Field(u"RangeTo", &CFGRange::RangeTo),
};
template <>
inline constexpr std::tuple fieldsOf<CFGCommand>{
    Field(u"Pos", &CFGCommand::Pos),
    Field(u"Caption", &CFGCommand::Caption),
    Field(u"Command", &CFGCommand::Command),
};

// --- tables: nothing but the header -----------------------------------------------------------

template <>
inline constexpr std::tuple<> fieldsOf<CFGRow>{};
template <>
inline constexpr std::tuple<> fieldsOf<CFGTable>{};

// --- who works on what ------------------------------------------------------------------------

template <>
inline constexpr std::tuple fieldsOf<CJob>{
    Field(u"Name", &CJob::Name),
    Field(u"Description", &CJob::Description),
    Field(u"Type", &CJob::Type),
    Field(u"SystemID", &CJob::SystemID),
};
template <>
inline constexpr std::tuple fieldsOf<CProject>{
    Field(u"Name", &CProject::Name),     Field(u"Description", &CProject::Description),
    Field(u"Status", &CProject::Status), Field(u"Path", &CProject::Path),
    Field(u"Text", &CProject::Text),     Field(u"DBName", &CProject::DBName),
    Field(u"DBType", &CProject::DBType),
};
template <>
inline constexpr std::tuple fieldsOf<CUser>{
    Field(u"Type", &CUser::Type),
    Field(u"Name", &CUser::Name),
    Field(u"Comment", &CUser::Comment),
    Field(u"Password", &CUser::Password),
};

/// All attributes of a class's element as they are written: those of the header, then its own.
template <class Object>
inline constexpr auto attributesOf = [] {
  std::array<ElementAttribute, std::tuple_size_v<decltype(fieldsOf<CDBObject>)> +
                                   std::tuple_size_v<decltype(fieldsOf<Object>)>>
      all{};
  std::size_t count = 0;
  const auto add = [&](const auto& field) { all[count++] = {field.name(), field.kind()}; };
  forEachField<CDBObject>(add);
  forEachField<Object>(add);
  return all;
}();

}  // namespace kpx
