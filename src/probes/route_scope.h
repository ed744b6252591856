#pragma once
#include "foundation/guarded.h"
#include "probes/temporary_route.h"

namespace corvane {

// Takes the routes of a CTemporaryRoute away when its scope is left, whatever way that happens.
class RouteScope {
 public:
  explicit RouteScope(CTemporaryRoute& route) : m_Route(route) {}
  ~RouteScope() {
    GiveBack("CUtils", "RemoveLastAddedIP4Route", [this] { m_Route.RemoveLastAddedIP4Route(); });
    GiveBack("CUtils", "RemoveLastAddedIP6Route", [this] { m_Route.RemoveLastAddedIP6Route(); });
  }
  RouteScope(const RouteScope&) = delete;
  RouteScope& operator=(const RouteScope&) = delete;

 private:
  CTemporaryRoute& m_Route;
};

}  // namespace corvane
