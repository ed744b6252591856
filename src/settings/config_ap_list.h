#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "store/ap_list_row.h"
#include "store/registry.h"

namespace corvane {

// What the deny and the allow list of an adapter have in common: rows that come from a file beside
// the executable, which is absorbed once and moved away, and from a value of the adapter's key,
// which clients write; the caller hands the key. On the adapter's worker only.
class CConfigApList {
 public:
  // Rows of the file, then those of the value; writes them all to the value. True when that write
  // succeeded; the rows are in force in any case. At the worker's start.
  bool LoadFromFileAndRegistry(CRegistryHelperBase& key);
  // The rows of the value alone, none when it is missing; true when it is there. In each round.
  bool ReloadFromRegistry(const CRegistryHelperBase& key);
  // Merges the rows of a UTF-8 JSON text; true when it has at least one.
  bool LoadConfiguration(std::string_view text);
  std::string ToJson() const;
  const ApListRows& Rows() const { return m_Rows; }
  std::uint64_t Version() const { return m_Version; }  // another one where the rows may differ

 protected:
  struct Kind {
    const char* className;
    const char* moveName;  // of the operation that moves the file, for the log
    const char* stem;      // of the file; the backup's is this and "_backup"
    const char16_t* valueName;
    bool (*read)(std::string_view json, ApListRows* rows);
  };
  explicit CConfigApList(const Kind& kind) : m_Kind(kind) {}
  ~CConfigApList() = default;
  CConfigApList(const CConfigApList&) = delete;
  CConfigApList& operator=(const CConfigApList&) = delete;

  // True on success; a failure is logged, and the file stays.
  bool MoveToBackup() const;

 private:
  void Clear();
  // Merges the rows of the text; true when it has one. Nothing when reading it was cut short: that
  // is logged, and the rows before the cut are in force.
  std::optional<bool> ReadRows(std::string_view text);

  const Kind& m_Kind;
  ApListRows m_Rows;
  std::uint64_t m_Version = 0;
  std::optional<WString> m_Reloaded;  // the text that the rows are those of, where that is known
};

}  // namespace corvane
