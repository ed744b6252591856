#pragma once
#include <atomic>

namespace corvane {

// While one of these lives, nothing is told of faults and contained exceptions: standard output
// then belongs to whoever reads it as data.
class CQuietReports {
 public:
  CQuietReports() { ++s_Count; }
  ~CQuietReports() { --s_Count; }
  CQuietReports(const CQuietReports&) = delete;
  CQuietReports& operator=(const CQuietReports&) = delete;

  static bool InForce() { return s_Count > 0; }

 private:
  inline static std::atomic<int> s_Count{0};
};

}  // namespace corvane
