#pragma once

#include <cstddef>

#include "kpx/report/OperationNumber.h"

namespace kpx {

/// The operations of configurations that report failures, by number.
inline constexpr ErrorEntry configOperations[] = {
    {42830, "CFGRange::GetElementName"},
    {42832, "CFGRange::serializeXML"},
    {42833, "CFGRange::loadByXML"},
    {42838, "CFGCodedValue::GetElementName"},
    {42840, "CFGCodedValue::serializeXML"},
    {42841, "CFGCodedValue::loadByXML"},
    {42846, "CFGCommand::GetElementName"},
    {42848, "CFGCommand::serializeXML"},
    {42857, "CFGHeader::ResetPos"},
    {42860, "CFGTable::loadByXML"},
    {42861, "CFGTable::serializeXML"},
    {42863, "CFGTable::AddColDef"},
    {42864, "CFGTable::AddColumn"},
    {42866, "CFGTable::GetElementName"},
    {42872, "CFGRow::loadByXML"},
    {42873, "CFGRow::serializeXML"},
    {42874, "CFGRow::AddCell"},
    {42878, "CFGRow::GetElementName"},
    {42884, "CFGConfig::loadByXML"},
    {42885, "CFGConfig::serializeXML"},
    {42886, "CFGConfig::AddSetting"},
    {42887, "CFGConfig::AddColumn"},
    {42892, "CFGClass::loadByXML"},
    {42893, "CFGClass::serializeXML"},
    {42898, "CFGClass::GetElementName"},
    {42904, "CFGCol::loadByXML"},
    {42905, "CFGCol::serializeXML"},
    {42913, "CFGCol::GetElementName"},
    {42919, "CFGValue::loadByXML"},
    {42920, "CFGValue::serializeXML"},
    {42922, "CFGValue::GetElementName"},
    {42926, "CFGCommand::loadByXML"},
    {42927, "CFGConfig::GetElementName"},
    {43087, "CJob::loadByXML"},
    {43088, "CJob::serializeXML"},
    {43090, "CJob::GetElementName"},
    {43091, "CJob::CJob"},
    {43210, "CProject::CProject"},
    {43211, "CProject::GetElementName"},
    {43213, "CProject::serializeXML"},
    {43214, "CProject::loadByXML"},
    {43327, "CUser::loadByXML"},
    {43328, "CUser::serializeXML"},
    {43330, "CUser::GetElementName"},
    {43331, "CUser::CUser"},
};

/// The number of one of them: "CFGRange::GetElementName"_config.
consteval OperationNumber operator""_config(const char* operation, std::size_t length) {
  return OperationNumber::in(configOperations, {operation, length});
}

}  // namespace kpx
