#include "settings/config_ap_list.h"

#include "foundation/guarded.h"
#include "foundation/log_lines.h"
#include "settings/program_file.h"
#include "store/ap_list_json.h"

namespace corvane {

bool CConfigApList::LoadFromFileAndRegistry(CRegistryHelperBase& key) {
  Clear();
  const std::string file = ReadProgramFile(m_Kind.stem);
  if (!file.empty()) LoadConfiguration(file);
  WString stored;
  if (key.GetString(m_Kind.valueName, &stored)) LoadConfiguration(WideToUtf8(stored));
  const bool written = key.SetString(m_Kind.valueName, Utf8ToWide(ToJson()));
  // Last, so that at each instant the rows are in one of the two places that a start reads.
  if (!file.empty()) MoveToBackup();
  return written;
}

bool CConfigApList::ReloadFromRegistry(const CRegistryHelperBase& key) {
  WString stored;
  const bool isThere = key.GetString(m_Kind.valueName, &stored);
  if (isThere && m_Reloaded == stored) return true;
  Clear();
  if (!isThere) return false;
  if (ReadRows(WideToUtf8(stored))) m_Reloaded = std::move(stored);
  return true;
}

void CConfigApList::Clear() {
  if (!m_Rows.empty()) ++m_Version;
  m_Rows.clear();
  m_Reloaded.reset();
}

bool CConfigApList::LoadConfiguration(std::string_view text) {
  const std::size_t before = m_Rows.size();
  const std::optional<bool> hasRows = ReadRows(text);
  return hasRows ? *hasRows : m_Rows.size() > before;
}

std::optional<bool> CConfigApList::ReadRows(std::string_view text) {
  ++m_Version;
  m_Reloaded.reset();
  return Contained([&] { return std::optional(m_Kind.read(text, &m_Rows)); },
                   [&](const Failure& failure) -> std::optional<bool> {
                     LOG_ERROR(u"%S::LoadConfiguration: %S: %S", m_Kind.className, failure.Kind(),
                               failure.what);
                     return std::nullopt;
                   });
}

std::string CConfigApList::ToJson() const { return ApListJson(m_Rows); }

bool CConfigApList::MoveToBackup() const {
  const std::string from = ProgramFilePath(m_Kind.stem);
  const std::string to = ProgramFilePath(std::string(m_Kind.stem) + "_backup");
  const std::uint32_t error = MoveProgramFile(from, to);
  if (error == 0) return true;
  LOG_ERROR(u"%S::%S: Failed! rc=%i, errno=%i, command=%S", m_Kind.className, m_Kind.moveName, 1,
            error, "move /y " + from + " " + to);
  return false;
}

}  // namespace corvane
