#include "platform/sim/kernel/sim_files.h"

#include <algorithm>

#include "platform/sim/kernel/seam_gate.h"
#include "platform/sim/kernel/sim_text.h"
#include "platform/thread_api.h"

namespace corvane::platform::sim {

namespace {

// One separator, none doubled and none at the end; the root is empty.
std::u16string CleanPath(std::u16string_view path) {
  std::u16string clean;
  for (const char16_t c : path) {
    const bool separator = c == u'/' || c == u'\\';
    if (separator && clean.ends_with(u'/')) continue;
    clean += separator ? u'/' : c;
  }
  if (clean.ends_with(u'/')) clean.pop_back();
  return clean;
}

std::u16string NodeKey(std::u16string_view path) { return FoldCase(CleanPath(path)); }

}  // namespace

SimFiles::SimFiles(SeamGate& gate, ThreadApi& threads) : m_Gate(gate), m_Threads(threads) {
  m_Nodes[u""] = std::make_shared<Node>(Node{.directory = true});
  MakeDirectories(std::u16string(kDataFolder) + u"/OstrelNetworks/Corvane");
  MakeDirectories(kProgramFolder);
}

bool SimFiles::Passes(const char* operation, DWORD ordinary) {
  const DWORD code = m_Gate.Enter(operation, ordinary);
  if (code != ERROR_SUCCESS) m_Threads.SetLastError(code);
  return code == ERROR_SUCCESS;
}

BOOL SimFiles::Fail(DWORD code) {
  m_Threads.SetLastError(code);
  return code == ERROR_SUCCESS ? TRUE : FALSE;
}

SimFiles::Handle* SimFiles::Find(HANDLE file) {
  const auto found = m_Handles.find(reinterpret_cast<std::uintptr_t>(file));
  return found == m_Handles.end() ? nullptr : &found->second;
}

std::shared_ptr<SimFiles::Node> SimFiles::FindNode(std::u16string_view path) const {
  const auto found = m_Nodes.find(NodeKey(path));
  return found == m_Nodes.end() ? nullptr : found->second;
}

bool SimFiles::HasParent(std::u16string_view path) const {
  const std::u16string clean = CleanPath(path);
  const std::size_t end = clean.rfind(u'/');
  if (end == clean.npos) return false;
  const auto parent = FindNode(clean.substr(0, end));
  return parent && parent->directory;
}

DWORD SimFiles::WhyMissing(std::u16string_view path) const {
  return HasParent(path) ? ERROR_FILE_NOT_FOUND : ERROR_PATH_NOT_FOUND;
}

HANDLE SimFiles::CreateFileW(LPCWSTR path, DWORD access, DWORD disposition) {
  if (!Passes("CreateFileW", ERROR_ACCESS_DENIED)) return nullptr;
  HANDLE file = nullptr;
  m_Threads.SetLastError(Open(ViewOf(path), access, disposition, &file));
  return file;
}

// On success the code tells, as on Windows, whether the file was there before.
DWORD SimFiles::Open(std::u16string_view path, DWORD access, DWORD disposition, HANDLE* file) {
  const bool known =
      disposition == CREATE_ALWAYS || disposition == OPEN_EXISTING || disposition == OPEN_ALWAYS;
  if (!known) return ERROR_INVALID_PARAMETER;
  std::shared_ptr<Node> node = FindNode(path);
  const bool existed = node != nullptr;
  if (existed && node->directory) return ERROR_ACCESS_DENIED;
  if (!existed) {
    if (disposition == OPEN_EXISTING) return WhyMissing(path);
    if (!HasParent(path)) return ERROR_PATH_NOT_FOUND;
    node = std::make_shared<Node>(Node{.path = CleanPath(path)});
    m_Nodes[NodeKey(path)] = node;
  }
  if (disposition == CREATE_ALWAYS) node->bytes.clear();
  ++node->handles;
  m_LastHandle += 4;
  m_Handles[m_LastHandle] = {node, access, 0};
  *file = reinterpret_cast<HANDLE>(m_LastHandle);
  return existed && disposition != OPEN_EXISTING ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS;
}

BOOL SimFiles::ReadFile(HANDLE file, void* buffer, DWORD size, DWORD* read) {
  if (read) *read = 0;
  if (!Passes("ReadFile", ERROR_GEN_FAILURE)) return FALSE;
  Handle* handle = Find(file);
  if (!handle) return Fail(ERROR_INVALID_HANDLE);
  if (!(handle->access & GENERIC_READ)) return Fail(ERROR_ACCESS_DENIED);
  const std::string& bytes = handle->node->bytes;
  const std::size_t from = std::min(handle->position, bytes.size());
  const std::size_t count = std::min<std::size_t>(size, bytes.size() - from);
  bytes.copy(static_cast<char*>(buffer), count, from);
  handle->position = from + count;
  if (read) *read = static_cast<DWORD>(count);
  return TRUE;
}

BOOL SimFiles::WriteFile(HANDLE file, const void* data, DWORD size, DWORD* written) {
  if (written) *written = 0;
  if (!Passes("WriteFile", ERROR_GEN_FAILURE)) return FALSE;
  Handle* handle = Find(file);
  if (!handle) return Fail(ERROR_INVALID_HANDLE);
  if (!(handle->access & (GENERIC_WRITE | FILE_APPEND_DATA))) return Fail(ERROR_ACCESS_DENIED);
  std::string& bytes = handle->node->bytes;
  if (!(handle->access & GENERIC_WRITE)) handle->position = bytes.size();
  if (bytes.size() < handle->position) bytes.resize(handle->position);
  bytes.replace(handle->position, size, static_cast<const char*>(data), size);
  handle->position += size;
  if (written) *written = size;
  return TRUE;
}

BOOL SimFiles::FlushFileBuffers(HANDLE file) {
  if (!Passes("FlushFileBuffers", ERROR_GEN_FAILURE)) return FALSE;
  const Handle* handle = Find(file);
  if (!handle) return Fail(ERROR_INVALID_HANDLE);
  const bool writes = (handle->access & (GENERIC_WRITE | FILE_APPEND_DATA)) != 0;
  return writes ? TRUE : Fail(ERROR_ACCESS_DENIED);
}

BOOL SimFiles::CloseFile(HANDLE file) {
  if (!Passes("CloseFile", ERROR_GEN_FAILURE)) return FALSE;
  const Handle* handle = Find(file);
  if (!handle) return Fail(ERROR_INVALID_HANDLE);
  --handle->node->handles;
  m_Handles.erase(reinterpret_cast<std::uintptr_t>(file));
  return TRUE;
}

BOOL SimFiles::GetFileSizeEx(HANDLE file, ULONGLONG* size) {
  if (!Passes("GetFileSizeEx", ERROR_GEN_FAILURE)) return FALSE;
  const Handle* handle = Find(file);
  if (!handle) return Fail(ERROR_INVALID_HANDLE);
  *size = handle->node->bytes.size();
  return TRUE;
}

BOOL SimFiles::CopyFileW(LPCWSTR from, LPCWSTR to, BOOL failIfExists) {
  if (!Passes("CopyFileW", ERROR_ACCESS_DENIED)) return FALSE;
  const DWORD code = Copy(ViewOf(from), ViewOf(to), failIfExists != FALSE);
  return code == ERROR_SUCCESS ? TRUE : Fail(code);
}

DWORD SimFiles::Copy(std::u16string_view from, std::u16string_view to, bool failIfExists) {
  const auto source = FindNode(from);
  const auto target = FindNode(to);
  if (!source) return WhyMissing(from);
  if (source->directory || (target && target->directory)) return ERROR_ACCESS_DENIED;
  if (target && failIfExists) return ERROR_FILE_EXISTS;
  if (target && target->handles > 0) return ERROR_SHARING_VIOLATION;
  if (!HasParent(to)) return ERROR_PATH_NOT_FOUND;
  Write(to, source->bytes);
  return ERROR_SUCCESS;
}

BOOL SimFiles::MoveFileExW(LPCWSTR from, LPCWSTR to, DWORD flags) {
  if (!Passes("MoveFileExW", ERROR_ACCESS_DENIED)) return FALSE;
  const DWORD code = Move(ViewOf(from), ViewOf(to), (flags & MOVEFILE_REPLACE_EXISTING) != 0);
  return code == ERROR_SUCCESS ? TRUE : Fail(code);
}

DWORD SimFiles::Move(std::u16string_view from, std::u16string_view to, bool replace) {
  const auto source = FindNode(from);
  const auto target = FindNode(to);
  if (!source) return WhyMissing(from);
  if (!HasParent(to)) return ERROR_PATH_NOT_FOUND;
  if (source->directory) return ERROR_ACCESS_DENIED;  // the program moves files only
  if (source->handles > 0) return ERROR_SHARING_VIOLATION;
  if (target && target != source) {
    if (!replace) return ERROR_ALREADY_EXISTS;
    if (target->directory) return ERROR_ACCESS_DENIED;
    if (target->handles > 0) return ERROR_SHARING_VIOLATION;
  }
  m_Nodes.erase(NodeKey(from));
  source->path = CleanPath(to);
  m_Nodes[NodeKey(to)] = source;
  return ERROR_SUCCESS;
}

BOOL SimFiles::DeleteFileW(LPCWSTR path) {
  if (!Passes("DeleteFileW", ERROR_ACCESS_DENIED)) return FALSE;
  const auto node = FindNode(ViewOf(path));
  if (!node) return Fail(WhyMissing(ViewOf(path)));
  if (node->directory) return Fail(ERROR_ACCESS_DENIED);
  if (node->handles > 0) return Fail(ERROR_SHARING_VIOLATION);
  m_Nodes.erase(NodeKey(ViewOf(path)));
  return TRUE;
}

BOOL SimFiles::CreateDirectoryW(LPCWSTR path) {
  if (!Passes("CreateDirectoryW", ERROR_ACCESS_DENIED)) return FALSE;
  if (FindNode(ViewOf(path))) return Fail(ERROR_ALREADY_EXISTS);
  if (!HasParent(ViewOf(path))) return Fail(ERROR_PATH_NOT_FOUND);
  MakeDirectories(ViewOf(path));
  return TRUE;
}

DWORD SimFiles::GetFileAttributesW(LPCWSTR path) {
  if (!Passes("GetFileAttributesW", ERROR_ACCESS_DENIED)) return INVALID_FILE_ATTRIBUTES;
  const auto node = FindNode(ViewOf(path));
  if (!node || ViewOf(path).empty()) {
    Fail(WhyMissing(ViewOf(path)));
    return INVALID_FILE_ATTRIBUTES;
  }
  return node->directory ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_NORMAL;
}

HRESULT SimFiles::SHGetFolderPathW(int csidl, std::u16string* path) {
  if (const DWORD code = m_Gate.Enter("SHGetFolderPathW"); code != ERROR_SUCCESS) {
    return HRESULT_FROM_WIN32(code);
  }
  if (csidl != CSIDL_COMMON_APPDATA) return E_FAIL;
  *path = kDataFolder;
  return S_OK;
}

DWORD SimFiles::GetModuleFileNameA(std::string* path) {
  if (!Passes("GetModuleFileNameA", ERROR_GEN_FAILURE)) return 0;
  *path = ToUtf8(std::u16string(kProgramFolder) + u"/corvane.exe");
  return static_cast<DWORD>(path->size());
}

std::optional<std::string> SimFiles::Read(std::u16string_view path) const {
  const auto node = FindNode(path);
  return node && !node->directory ? std::optional(node->bytes) : std::nullopt;
}

void SimFiles::Write(std::u16string_view path, std::string_view bytes) {
  const std::u16string clean = CleanPath(path);
  MakeDirectories(clean.substr(0, clean.rfind(u'/')));
  auto& node = m_Nodes[NodeKey(path)];
  if (!node) node = std::make_shared<Node>(Node{.path = clean});
  node->bytes = bytes;
}

void SimFiles::MakeDirectories(std::u16string_view path) {
  const std::u16string clean = CleanPath(path);
  for (std::size_t end = clean.find(u'/', 1);; end = clean.find(u'/', end + 1)) {
    const std::u16string part = clean.substr(0, end);
    auto& node = m_Nodes[FoldCase(part)];
    if (!node) node = std::make_shared<Node>(Node{.path = part, .directory = true});
    if (end == clean.npos) return;
  }
}

bool SimFiles::Remove(std::u16string_view path) {
  const auto node = FindNode(path);
  return node && !node->directory && m_Nodes.erase(NodeKey(path)) == 1;
}

std::vector<std::u16string> SimFiles::List(std::u16string_view directory) const {
  const std::u16string prefix = NodeKey(directory) + u"/";
  std::vector<std::u16string> paths;
  for (const auto& [key, node] : m_Nodes) {
    if (!node->directory && key.starts_with(prefix)) paths.push_back(node->path);
  }
  return paths;
}

}  // namespace corvane::platform::sim
