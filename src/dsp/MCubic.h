#pragma once

// The cubic through y1 (t = 0) and y2 (t = 1) whose slopes there are (y2 - y0) / 2 and (y3 - y1) / 2, by
// Horner's rule; for numbers and for registers of them.
template <typename T>
constexpr T MCubic(T y0, T y1, T y2, T y3, T t) noexcept {
  const T third = ((y1 - y2) * 3 - y0 + y3) / 2;
  const T second = 2 * y2 + y0 - (5 * y1 + y3) / 2;
  return y1 + ((third * t + second) * t + (y2 - y0) / 2) * t;
}
