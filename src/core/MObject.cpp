#include "core/MObject.h"

MObject::~MObject() noexcept(false) = default;
