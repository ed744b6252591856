#pragma once
// Process-wide objects, made on first use and dropped in reverse order of creation.

#include <atomic>

namespace corvane {

namespace singletons {
// Enters a destroyer, to run at DropAll in reverse order of entry.
void Register(void (*drop)());
// Drops every singleton. Only while no thread of the program runs; afterwards each is made anew on
// its next use.
void DropAll();

// Held while a singleton is made. The thread that holds it may make further ones.
class CreationGuard {
 public:
  CreationGuard();
  ~CreationGuard();
};
}  // namespace singletons

// T needs a default constructor, which it may keep private by making Singleton<T> a friend. The
// constructor may use other singletons; it must not wait.
template <class T>
class Singleton {
 public:
  static T& GetInstance() {
    T* instance = s_Instance.load(std::memory_order_acquire);
    if (!instance) {
      singletons::CreationGuard guard;
      instance = s_Instance.load(std::memory_order_acquire);
      if (!instance) {
        instance = new T();
        s_Instance.store(instance, std::memory_order_release);
        singletons::Register([] { delete s_Instance.exchange(nullptr); });
      }
    }
    return *instance;
  }
  // Null until it is made.
  static T* Find() { return s_Instance.load(std::memory_order_acquire); }

 private:
  inline static std::atomic<T*> s_Instance{nullptr};
};

}  // namespace corvane
