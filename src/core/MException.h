#pragma once
// MException, the one way a failure travels: thrown by value, caught by reference. It keeps one identity on
// both sides of the boundary, so that a host catches what the library throws.

#include "core/MString.h"

namespace MErrorCode {
constexpr int32_t kOrdinary = 0;
constexpr int32_t kNotImplemented = 1;
constexpr int32_t kBadArgument = 2;
constexpr int32_t kTransferFailed = 256;  // input or output failed, contents of a file are wrong
constexpr int32_t kNotOpened = 257;       // file could not be opened
constexpr int32_t kStreamClosed = 258;    // stream is not open
}  // namespace MErrorCode

class M_VISIBLE MException {
 public:
  explicit MException(MString text, int32_t number = MErrorCode::kOrdinary);
  MException(const MException&) = default;
  MException& operator=(const MException&) = default;
  virtual ~MException();

  // Puts the place in front of those that `source` names already.
  void AddSource(const MString& place);

  MString source;   // where it came from; nearly always empty
  MString message;  // translated and formatted
  int32_t code;
};

// Raises "Service "{0}" is not implemented." with the operation in lower-case words.
[[noreturn]] void MThrowNotImplemented(const MString& operation);

// Raises "Index out of range."
[[noreturn]] void MThrowIndexOutOfRange();
