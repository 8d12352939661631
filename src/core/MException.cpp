#include "core/MException.h"

#include <utility>

#include "core/MFormat.h"
#include "core/MTranslate.h"

MException::MException(MString text, int32_t number) : message(std::move(text)), code(number) {}

MException::~MException() = default;

void MException::AddSource(const MString& place) {
  MString all(place);
  if (!source.IsEmpty()) {
    all.Append(", ");
    all.Append(source);
  }
  source = all;
}

void MThrowNotImplemented(const MString& operation) {
  throw MException(Format(Translate("Service \"{0}\" is not implemented.")).Arg(operation).Text(),
                   MErrorCode::kNotImplemented);
}

void MThrowIndexOutOfRange() {
  throw MException(Translate("Index out of range."));
}
