#include "pipe/client_request.h"

#include "store/json_text.h"

namespace corvane {

const rapidjson::Value* CClientRequest::Find(const char* name) const {
  if (!m_Json.IsObject()) return nullptr;
  const auto member = m_Json.FindMember(name);
  return member == m_Json.MemberEnd() ? nullptr : &member->value;
}

bool CClientRequest::GetBytes(const char* name, std::string_view* out) const {
  const rapidjson::Value* const value = Find(name);
  if (!value || !value->IsString()) return false;
  *out = JsonText(*value);
  return true;
}

bool CClientRequest::GetString(const char* name, WString* out) const {
  std::string_view bytes;
  if (!GetBytes(name, &bytes)) return false;
  *out = Utf8ToWide(bytes);
  return true;
}

bool CClientRequest::GetUint(const char* name, std::uint32_t* out) const {
  const rapidjson::Value* const value = Find(name);
  if (!value || !value->IsUint()) return false;
  *out = value->GetUint();
  return true;
}

bool CClientRequest::GetInt(const char* name, std::int32_t* out) const {
  const rapidjson::Value* const value = Find(name);
  if (!value || !value->IsInt()) return false;
  *out = value->GetInt();
  return true;
}

bool CClientRequest::GetBool(const char* name, bool* out) const {
  const rapidjson::Value* const value = Find(name);
  if (!value || !value->IsBool()) return false;
  *out = value->GetBool();
  return true;
}

const rapidjson::Value* CClientRequest::FindObject(const char* name) const {
  const rapidjson::Value* const value = Find(name);
  return value && value->IsObject() ? value : nullptr;
}

WString WideFromBytes(std::string_view bytes) {
  WString text = Utf8ToWide(bytes);
  return WideToUtf8(text) == bytes ? text : Widen(bytes);
}

}  // namespace corvane
