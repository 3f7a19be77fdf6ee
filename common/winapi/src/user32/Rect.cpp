// Rectangles.
#include <windows.h>

#include <algorithm>
#include <cstdint>

namespace {

LONG Moved(LONG coordinate, int distance) {
  return static_cast<LONG>(static_cast<std::uint32_t>(coordinate) +
                           static_cast<std::uint32_t>(distance));
}

}  // namespace

BOOL WINAPI IntersectRect(LPRECT result, const RECT* first, const RECT* second) {
  if (result == nullptr || first == nullptr || second == nullptr) return FALSE;
  const RECT common = {std::max(first->left, second->left), std::max(first->top, second->top),
                       std::min(first->right, second->right),
                       std::min(first->bottom, second->bottom)};
  const bool isAny = common.left < common.right && common.top < common.bottom;
  *result = isAny ? common : RECT{};
  return isAny;
}

BOOL WINAPI OffsetRect(LPRECT rect, int x, int y) {
  if (rect == nullptr) return FALSE;
  *rect = {Moved(rect->left, x), Moved(rect->top, y), Moved(rect->right, x),
           Moved(rect->bottom, y)};
  return TRUE;
}
