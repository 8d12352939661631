#pragma once
#include "core/MEncodingWriter.h"
#include "core/MXMLItem.h"

// Writes a tree of items so that MXMLParser reads the same tree again, apart from blanks at the ends of texts
// and of what names cannot hold: characters of names that cannot be read, or that the encoding does not have,
// are written as "_". In texts and values every character has a form: those of the table in MXMLEntities.h
// are entities, those that the encoding does not have are numbers.
//
// Each element stands on a line of its own, indented by its depth below the item, up to 32 levels: beyond
// that the blanks of a deep tree would outgrow everything else. Compact output has no white space between
// elements.
class MXMLWriter {
 public:
  // The encoding's header is written before.
  MXMLWriter(MStream& stream, const MEncoding::Codec& codec, bool compact) noexcept
      : writer_(stream, codec), isCompact_(compact), isWide_(&codec == &MEncoding::UTF16Codec::Get()) {}

  void WriteHead(const MString& encoding);
  void WriteTree(const MXMLItem& item);
  void Flush() { writer_.Flush(); }

 private:
  static constexpr int32_t kDeepestIndent = 32;

  void BeginElement(const MXMLItem& item, int32_t level);
  void EndElement(const MXMLItem& item, int32_t level);
  void BeginLine(int32_t level);
  void WriteAttribute(const MAttribute& attribute);
  bool WritePlainAttribute(const MAttribute& attribute);
  void WriteName(const MString& name, bool isElement);
  void WriteValue(const MString& value);
  MString ReadableName(const MString& name, bool isElement) const;
  MString EscapedValue(const MString& value) const;
  bool Carries(const MString& text) const;

  MEncoding::Writer writer_;
  bool isCompact_;
  bool isWide_;
};
