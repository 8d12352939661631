#pragma once
#include <limits>
#include <memory>

#include "core/MStream.h"
#include "core/MXMLAttribute.h"

// An element of an XML tree: name, text, attributes, children. It owns its attributes and children. Trees of
// any depth are read, written and destroyed without recursion.
//
// Names are compared as MString::Compare does: without regard to case and diacritics. Attributes are kept,
// and written to files, in that order. An item is for one thread at a time, for reading too, since two caches
// hold what the last HasAttribute and HasSubItem found.
class MXMLItem final {
 public:
  M_LIBRARY_MEMORY

  MXMLItem() noexcept = default;
  explicit MXMLItem(const MString& name) noexcept : name_(name) {}
  MXMLItem(const MXMLItem&) = delete;
  MXMLItem& operator=(const MXMLItem&) = delete;
  ~MXMLItem();

  MXMLItem* GetOwner() const noexcept { return owner_; }                 // null in the root
  MXMLItem* GetNext() const noexcept { return GetSibling(index_ + 1); }  // null at the ends
  MXMLItem* GetPrevious() const noexcept { return GetSibling(index_ - 1); }
  int32_t GetDepth() const noexcept { return depth_; }  // 0 in the root
  const MList<MXMLItem*>& GetChildren() const noexcept { return children_ ? children_->list : NoChildren(); }
  const MString& GetName() const noexcept { return name_; }
  void SetName(const MString& name) noexcept { name_ = name; }
  const MString& GetText() const noexcept { return text_ ? text_->text : NoText(); }
  void SetText(const MString& text);
  // Adds text behind what is there, after a line feed.
  void AppendText(const MString& text);

  // Sorted by name.
  const MList<MAttribute>& GetAttributes() const noexcept { return attributes_.list; }
  // Replaces the value of the attribute of that name, or adds one.
  void SetAttribute(const MString& name, const MString& value);
  MString GetAttribute(const MString& name, const MString& fallback = MString()) const;
  // Raises "Could not find required attribute ({0})."
  MString GetRequiredAttribute(const MString& name) const;
  // Keeps what it finds for CachedAttribute, so that an optional read needs one search. Without a find
  // CachedAttribute raises "There is no attribute in the cache. Previous call to HasAttribute probably did
  // not succeed."
  bool HasAttribute(const MString& name) const noexcept;
  const MString& CachedAttribute() const;
  // False if there is none.
  bool RemoveAttribute(const MString& name);

  // The same for the first child of a name: "There is no subitem in the cache. Previous call to HasSubItem
  // probably did not succeed."
  bool HasSubItem(const MString& name) const noexcept;
  MXMLItem& CachedSubItem() const;
  // The first child of that name; one is added if there is none.
  MXMLItem& SubItem(const MString& name);
  MXMLItem& AddSubItem(const MString& name);
  // Destroys a child; "Index out of range." if it is none of this item.
  void RemoveSubItem(MXMLItem& item);
  // Removes name, text, attributes and children.
  void Clear() noexcept;

  // Empties the item and reads a file into it (MXMLParser, whose errors these are). A failure leaves what was
  // read up to there. Raises "The XML does not contain any elements." LoadFile adds the path to the
  // exception's source; a file that cannot be opened leaves the item as it was.
  void Load(MStream& stream);
  void LoadFile(const MString& path);
  // Writes the item as a file (MXMLWriter) in an encoding of MEncoding::FindCodec. An unknown encoding raises
  // before anything is written.
  void Save(MStream& stream, bool compact = false, const MString& encoding = "utf-8") const;
  void SaveFile(const MString& path, bool compact = false, const MString& encoding = "utf-8") const;

  // Makes the whole of a stream, from its start, the text, in hexadecimal digits; compressed is in the zlib
  // format.
  void StoreBinary(MStream& source, bool isCompressed = false);
  // Writes the bytes of such a text to a stream, whose position is then the same as before. Before anything
  // is written, a text that is none or is cut off raises as MStream::ThrowShortRead, and damaged compressed
  // bytes or more than `limit` plain ones as MCompressionStream::Read. The limit is for compressed bytes
  // only, of which a short text can stand for very many.
  void LoadBinary(MStream& target, bool isCompressed = false,
                  int64_t limit = std::numeric_limits<int64_t>::max()) const;

 private:
  friend class MXMLParser;

  // A list and the place of what was last found in it, -1 for nothing, which lies in the list's padding.
  template <typename T>
  struct Searched {
    [[no_unique_address]] MList<T> list;
    mutable int32_t found = -1;
  };
  // What many items do not have is made when it is first needed, so that large trees stay small.
  struct Text {
    M_LIBRARY_MEMORY
    MString text;
  };
  struct Children : Searched<MXMLItem*> {
    M_LIBRARY_MEMORY
  };
  static const MString& NoText() noexcept;
  static const MList<MXMLItem*>& NoChildren() noexcept;

  template <typename Part>
  static Part& Made(std::unique_ptr<Part>& part) {
    if (!part) part.reset(new Part);
    return *part;
  }
  MXMLItem* GetSibling(int32_t index) const noexcept;
  int32_t FindAttribute(const MString& name, bool& isFound) const noexcept;
  int32_t FindSubItem(const MString& name) const noexcept;
  void TakeAttributes(MList<MAttribute>& attributes);
  void DestroyChildren() noexcept;

  MXMLItem* owner_ = nullptr;
  int32_t index_ = 0;  // among the owner's children
  int32_t depth_ = 0;
  MString name_;
  Searched<MAttribute> attributes_;
  std::unique_ptr<Text> text_;
  std::unique_ptr<Children> children_;
};
