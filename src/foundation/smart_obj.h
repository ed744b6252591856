#pragma once
// Counted objects with an object lock. A long-lived class derives from SmartObjEx<C, SmartObj<>>
// and overrides GetClassName; holders are CSmartPointer. No cycle of holders may exist.
//
// The count is atomic and needs no lock, so a holder may be dropped under any other lock.

#include <atomic>
#include <cstdint>
#include <new>
#include <utility>

#include "foundation/crit_sec.h"
#include "foundation/exception.h"
#include "foundation/invariant.h"

namespace corvane {

class ISmartObj {
 public:
  virtual std::uint32_t AddRef() = 0;   // returns the new count
  virtual std::uint32_t Release() = 0;  // returns the new count; deletes the object at 0
  virtual std::uint32_t GetRefCount() = 0;
  virtual void Lock() = 0;    // enter the object's lock
  virtual void Unlock() = 0;  // leave it

 protected:
  ~ISmartObj() = default;
};

// Live objects of the process: their number, and for each address the class name known so far.
extern std::atomic<std::uint32_t> g_dbgSmartObjCount;
inline std::uint32_t LiveObjectCount() { return g_dbgSmartObjCount.load(); }
namespace live_objects {
struct Entry {
  const void* object;
  const char* name;
};
// The place of an object in the list of all; a member of it.
struct Node {
  Node* previous = nullptr;
  Node* next = nullptr;
  const void* object = nullptr;
  std::atomic<const char*> name{"SmartObj"};  // static text
};
void Add(Node* node, const void* object);
void Remove(Node* node);
std::size_t Size();
// Calls visit(entry, context) for each live object by rising address, with no lock held.
void ForEach(void (*visit)(const Entry& entry, void* context), void* context);
}  // namespace live_objects

// Out-of-memory report of CreateObject: writes the time and the text to the error stream and
// throws.
[[noreturn]] void ThrowOutOfMemory(const char* printed, const char* thrown);

// The lock of objects that nobody locks.
struct CNoLock {
  CNoLock(const char*, LockRank) {}
  void Lock() {}
  void Unlock() {}
};

template <class LockT = CCritSec>
class SmartObj : public virtual ISmartObj {
 public:
  explicit SmartObj(const char* lockName = "object", LockRank rank = LockRank::kObject)
      : m_Lock(lockName, rank) {
    live_objects::Add(&m_Node, this);
  }
  virtual ~SmartObj() { live_objects::Remove(&m_Node); }
  SmartObj(const SmartObj&) = delete;
  SmartObj& operator=(const SmartObj&) = delete;

  virtual const char* GetClassName() const { return "SmartObj"; }

  std::uint32_t AddRef() override {
    if (const char* name = GetClassName(); name != m_Node.name.load(std::memory_order_relaxed))
      m_Node.name.store(name, std::memory_order_relaxed);
    return m_Count.fetch_add(1, std::memory_order_relaxed) + 1;
  }
  std::uint32_t Release() override {
    std::uint32_t count = m_Count.load(std::memory_order_relaxed);
    while (count > 0) {
      if (m_Count.compare_exchange_weak(count, count - 1, std::memory_order_acq_rel)) {
        if (count == 1) delete this;
        return count - 1;
      }
    }
    Invariant(false, "an object is let go of no more often than it is held");
    return 0;
  }
  std::uint32_t GetRefCount() override { return m_Count.load(std::memory_order_acquire); }
  void Lock() override { m_Lock.Lock(); }
  void Unlock() override { m_Lock.Unlock(); }

  // The object's lock, for CCritSecLock.
  LockT& ObjectLock() { return m_Lock; }

 private:
  LockT m_Lock;
  std::atomic<std::uint32_t> m_Count{0};
  live_objects::Node m_Node;
};

// Holder of one counted object, or of none.
template <class T>
class CSmartPointer {
 public:
  CSmartPointer() = default;
  CSmartPointer(std::nullptr_t) {}                          // NOLINT
  CSmartPointer(T* object) : m_pObject(object) { Hold(); }  // NOLINT: converts on purpose
  CSmartPointer(const CSmartPointer& other) : m_pObject(other.m_pObject) { Hold(); }
  CSmartPointer(CSmartPointer&& other) noexcept
      : m_pObject(std::exchange(other.m_pObject, nullptr)) {}
  virtual ~CSmartPointer() { Drop(); }

  CSmartPointer& operator=(const CSmartPointer& other) {
    if (m_pObject != other.m_pObject) CSmartPointer(other).Swap(*this);
    return *this;
  }
  CSmartPointer& operator=(CSmartPointer&& other) noexcept {
    if (this != &other) CSmartPointer(std::move(other)).Swap(*this);
    return *this;
  }

  T* operator->() const { return m_pObject; }
  T& operator*() const { return *m_pObject; }
  T* get() const { return m_pObject; }
  explicit operator bool() const { return m_pObject != nullptr; }
  friend bool operator==(const CSmartPointer& a, const CSmartPointer& b) {
    return a.m_pObject == b.m_pObject;
  }

  void reset() { CSmartPointer().Swap(*this); }
  void Swap(CSmartPointer& other) noexcept { std::swap(m_pObject, other.m_pObject); }

  // Releases what is held and holds a new T.
  template <typename... Args>
  T* CreateObject(Args&&... args) {
    reset();
    T* object = new (std::nothrow) T(std::forward<Args>(args)...);
    if (!object) {
      ThrowOutOfMemory("instance CSmartPointer::CreateObject(): new DerivedSmartT() failed",
                       "instance CreateObject(): out of memory");
    }
    *this = CSmartPointer(object);
    return m_pObject;
  }

 private:
  void Hold() {
    if (m_pObject) m_pObject->AddRef();
  }
  void Drop() {
    if (m_pObject) std::exchange(m_pObject, nullptr)->Release();
  }

  T* m_pObject = nullptr;
};

// Gives a class its static CreateObject.
template <class T, class Base = SmartObj<>>
class SmartObjEx : public Base {
 public:
  using Base::Base;

  template <typename... Args>
  static CSmartPointer<T> CreateObject(Args&&... args) {
    T* object = new (std::nothrow) T(std::forward<Args>(args)...);
    if (!object) {
      ThrowOutOfMemory("static SmartObjEx::CreateObject(): new DerivedSmartT() failed",
                       "static CreateObject(): out of memory");
    }
    return CSmartPointer<T>(object);
  }
};

// For an object that lives as a member of another one: shares the owner's lifetime and lock.
class SmartObjEmbedded : public virtual ISmartObj {
 public:
  explicit SmartObjEmbedded(ISmartObj* owner) : m_pOwner(owner) {}
  virtual ~SmartObjEmbedded() = default;
  virtual const char* GetClassName() const { return "SmartObjEmbedded"; }
  std::uint32_t AddRef() override { return m_pOwner->AddRef(); }
  std::uint32_t Release() override { return m_pOwner->Release(); }
  std::uint32_t GetRefCount() override { return m_pOwner->GetRefCount(); }
  void Lock() override { m_pOwner->Lock(); }
  void Unlock() override { m_pOwner->Unlock(); }

 private:
  ISmartObj* m_pOwner;
};

}  // namespace corvane
