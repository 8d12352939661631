#pragma once
#include "core/MXMLItem.h"

// Numbers in attributes, for data that has to come back as it was: written with nine significant digits, so
// that it is the same float again, and never fewer than four decimals.
MString MExactNumberText(double value);

// The number of an attribute; `fallback` without one, and 0 for what is not finite. A text without a number
// is 0.
double MReadNumber(const MXMLItem& item, const MString& name, double fallback = 0);
