#include "core/MAtomicFile.h"
#include "core/MFileStream.h"
#include "core/MHexaStream.h"
#include "core/MMemoryStream.h"
#include "core/MStreamTools.h"
#include "core/MTranslate.h"
#include "core/MXMLItem.h"
#include "core/MXMLParser.h"
#include "core/MXMLWriter.h"
#include "core/MZLibStream.h"

void MXMLItem::Load(MStream& stream) {
  Clear();
  MXMLParser(*this).Parse(stream);
  if (name_.IsEmpty()) throw MException(Translate("The XML does not contain any elements."));
}

void MXMLItem::LoadFile(const MString& path) {
  MFileStream file(path, MFileStream::kRead);
  try {
    Load(file);
  } catch (MException& failure) {
    failure.AddSource(path);
    throw;
  }
}

void MXMLItem::Save(MStream& stream, bool compact, const MString& encoding) const {
  const MEncoding::Codec& codec = MEncoding::FindCodec(encoding);
  codec.WriteHeader(stream);
  MXMLWriter writer(stream, codec, compact);
  writer.WriteHead(encoding);
  writer.WriteTree(*this);
  writer.Flush();
}

void MXMLItem::SaveFile(const MString& path, bool compact, const MString& encoding) const {
  MEncoding::FindCodec(encoding);  // before a file is emptied
  MAtomicFile file(path);
  Save(file, compact, encoding);
  file.Commit();
}

void MXMLItem::StoreBinary(MStream& source, bool isCompressed) {
  if (!isCompressed) {
    SetText(MHexadecimalText(source, true));
    return;
  }
  source.Seek(0, MSeekOrigin::kStart);
  MMemoryStream digits;
  MHexaStream bytes(&digits);
  MZLibStream compressor(&bytes, true);
  MCopyStream(source, compressor);
  compressor.Finish();
  compressor.Close();
  SetText(MString::FromNarrow(reinterpret_cast<const char*>(digits.GetData()),
                              static_cast<int32_t>(digits.GetSize())));
}

void MXMLItem::LoadBinary(MStream& target, bool isCompressed, int64_t limit) const {
  for (int32_t i = 0; i < GetText().GetLength(); ++i)
    if (MDigitValue(GetText().At(i)) < 0) MStream::ThrowShortRead();
  const MBytes digits = MEncoding::ASCIICodec::Get().Encode(GetText(), false);
  MMemoryStream text(digits.GetData(), digits.GetSize());
  MHexaStream bytes(&text);
  const int64_t position = target.GetPosition();
  if (isCompressed) {
    MZLibStream checked(&bytes, false);
    checked.SetReadLimit(limit);
    checked.Seek(std::numeric_limits<int64_t>::max(), MSeekOrigin::kStart);
    if (!checked.HasEnded()) MStream::ThrowShortRead();
    bytes.Seek(0, MSeekOrigin::kStart);
    MZLibStream plain(&bytes, false);
    MCopyStream(plain, target);
  } else {
    MCopyStream(bytes, target);
  }
  target.Seek(position, MSeekOrigin::kStart);
}
