#pragma once

#include <cstddef>

#include "kpx/report/OperationNumber.h"

namespace kpx {

/// The operations of XML documents that report failures, by number; a new one takes the next number
/// from 910021 on.
inline constexpr ErrorEntry xmlOperations[] = {
    {70306, "CMarkup::operator="},
    {70311, "CMarkup::DetectUTF8"},
    {75068, "CMarkup::x_ParseDoc"},
    {910002, "CMarkup::Load"},
    {910003, "CMarkup::Save"},
    {910021, "CMarkup::SetDoc"},
    {910022, "CMarkup::GetError"},
    {910023, "CMarkup::SavePos"},
    {910024, "CMarkup::GetTagName"},
    {910025, "CMarkup::GetChildTagName"},
    {910026, "CMarkup::GetData"},
    {910027, "CMarkup::GetChildData"},
    {910028, "CMarkup::GetAttrib"},
    {910029, "CMarkup::GetChildAttrib"},
    {910030, "CMarkup::GetNthAttrib"},
    {910031, "CMarkup::GetNthChildAttrib"},
    {910032, "CMarkup::GetSubDoc"},
    {910033, "CMarkup::GetChildSubDoc"},
    {910034, "CMarkup::GetElemContent"},
    {910035, "CMarkup::SetTagName"},
    {910036, "CMarkup::SetChildTagName"},
    {910037, "CMarkup::SetData"},
    {910038, "CMarkup::SetChildData"},
    {910039, "CMarkup::SetAttrib"},
    {910040, "CMarkup::SetChildAttrib"},
    {910041, "CMarkup::RemoveAttrib"},
    {910042, "CMarkup::RemoveChildAttrib"},
    {910043, "CMarkup::AddElem"},
    {910044, "CMarkup::InsertElem"},
    {910045, "CMarkup::AddChildElem"},
    {910046, "CMarkup::InsertChildElem"},
    {910047, "CMarkup::AddSubDoc"},
    {910048, "CMarkup::InsertSubDoc"},
    {910049, "CMarkup::AddChildSubDoc"},
    {910050, "CMarkup::InsertChildSubDoc"},
    {910051, "CMarkup::AddNode"},
    {910052, "CMarkup::InsertNode"},
    {910053, "CMarkup::RemoveNode"},
    {910054, "CMarkup::EscapeText"},
    {910055, "CMarkup::UnescapeText"},
    {910056, "CMarkup::x_EncodeCDATASection"},
    {910057, "CMarkup::EncodeBase64"},
    {910058, "CMarkup::GetDeclaredEncoding"},
    {910059, "CMarkup::FindErrorLine"},
    {910060, "CMarkup::UTF16To8"},
};

/// The number of one of them: "CMarkup::operator="_xml.
consteval OperationNumber operator""_xml(const char* operation, std::size_t length) {
  return OperationNumber::in(xmlOperations, {operation, length});
}

}  // namespace kpx
