#include "plugin/MStorable.h"

bool MStorable::Save(MXMLItem& item) const {
  MString text;
  ToText(text);
  item.SetAttribute(key_, text);
  return true;
}

void MStorable::Load(const MXMLItem& item) {
  if (item.HasAttribute(key_))
    FromText(MString(item.CachedAttribute()));
  else
    Reset();
}
