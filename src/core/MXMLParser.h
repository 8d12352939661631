#pragma once
#include "core/MMLParser.h"

class MXMLItem;

// Builds the tree below an item out of an XML file. Blanks at the ends of a text are cut; texts of one
// element are joined by a line feed. What stands behind the end of the root element is not read, an element
// that the end of the file leaves open is taken as it is, and so is a file that has a million blanks in front
// of its root: it has none. Raises, as syntax errors, "Text outside of any
// element." and "Invalid closing element name."; names are compared as MString::Compare does.
class MXMLParser final : public MMLParser<MAttribute, MList<MAttribute>> {
 public:
  // The root is an empty item.
  explicit MXMLParser(MXMLItem& root) noexcept : root_(root) { isOutside_ = true; }

  bool OnElement(const MString& name, MList<MAttribute>& attributes, bool closing) override;
  bool OnText(const MString& text) override;

 private:
  MXMLItem& root_;
  MXMLItem* current_ = nullptr;  // null before the root
};
