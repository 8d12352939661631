#pragma once
#include "core/MString.h"

// The text with its entities replaced: "&name;" of the table & amp, < lt, > gt, ' apos, " quot, and "&#n;"
// and
// "&#xh;" with the number of any character. Every other "&" stays as it is written. "&;" makes `emptyName`
// true and stays as well.
MString MXMLResolveEntities(std::u16string_view text, bool& emptyName);

// Appends the entity that stands for a character of a text or value; false, and nothing, if it needs none.
// Line feeds and zeros have one too.
bool MXMLAppendEntity(MString& text, MChar unit);

// Appends "&#n;".
void MXMLAppendNumber(MString& text, uint32_t codePoint);
