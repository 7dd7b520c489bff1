#include "rfm_File.h"

#include "ZQABasAssert.h"
#include "ZQABasUtlFilePath.h"
#include "ZQABasUtlUrlParser.h"
#include "atr_translate.h"
#include "rfm_CodecZip.h"
#include "rfm_FileException.h"
#include "rfm_FileRepr.h"
#include "rfm_FileReprEncoded.h"
#include "rfm_FileReprLocal.h"
#include "rfm_FileReprRemote.h"

#include <cstdio>
#include <cstdlib>

namespace {

char const kSourcePath[] = "ZQARom/ZQARomRfm.m/src/rfm_File";

constexpr int kCopyBlockSize = 4096;

// With ZBX_RFM_LOGIFY set, to anything, each open tells which kind of file it took.
void Inform(bool logify, char const* line) {
  if (logify) std::fputs(line, stderr);
}

bool Logify() { return std::getenv("ZBX_RFM_LOGIFY") != nullptr; }

rfm_Codec* NewCodec() { return new rfm_CodecZip(rfm_CodecZip::kDefaultLevel); }

// The checks that every reading open makes before it looks at the file.
void CheckReadable(cow_String const& name) {
  ZQABasUtlFilePath path(name, cow_String());
  if (!path.Exists()) rfm_FileNoSuchFile(name).Throw(kSourcePath, __LINE__);
  if (!path.IsReadable()) rfm_FileNotReadable(name).Throw(kSourcePath, __LINE__);
}

rfm_File OpenForReading(cow_String const& name, cow_String const& key, bool preallocate, bool logify) {
  CheckReadable(name);
  if (ZQABasUtlUrlParser::IsUrl(name)) return rfm_File(new rfm_FileReprRemote(name, key));
  if (rfm_FileReprEncoded::IsEncoded(name)) {
    Inform(logify, "*** Informational: Opening Compressed File based MDB.\n");
    return rfm_File(new rfm_FileReprEncoded(name, utl_FileAccessRead, NewCodec()));
  }
  Inform(logify, "*** Informational: Opening File based ZDB.\n");
  return rfm_File(new rfm_FileReprLocal(name, utl_FileAccessRead, preallocate));
}

}  // namespace

rfm_File::rfm_File() = default;
rfm_File::rfm_File(rfm_FileRepr* repr) : m_Repr(repr) {}
rfm_File::rfm_File(rfm_File const& other) = default;
rfm_File& rfm_File::operator=(rfm_File const& other) = default;
rfm_File::~rfm_File() = default;

rfm_File rfm_File::Open(cow_String const& name, utl_FileAccess access, bool preallocate) {
  bool logify = Logify();
  switch (access) {
    case utl_FileAccessRead:
      return OpenForReading(name, cow_String(), preallocate, logify);

    case utl_FileAccessUpdate: {
      // A URL can never be updated: refused before any path check.
      if (ZQABasUtlUrlParser::IsUrl(name)) rfm_FileReadOnlyExc(name).Throw(kSourcePath, __LINE__);
      ZQABasUtlFilePath path(name, cow_String());
      if (!path.Exists()) rfm_FileNoSuchFile(name).Throw(kSourcePath, __LINE__);
      if (!path.IsWriteable()) rfm_FileReadOnlyExc(name).Throw(kSourcePath, __LINE__);
      if (rfm_FileReprEncoded::IsEncoded(name)) {
        Inform(logify, "*** Informational: Updating Compressed File based MDB.\n");
        return rfm_File(new rfm_FileReprEncoded(name, utl_FileAccessUpdate, NewCodec()));
      }
      Inform(logify, "*** Informational: Updating File based ZDB.\n");
      return rfm_File(new rfm_FileReprLocal(name, utl_FileAccessUpdate, preallocate));
    }

    case utl_FileAccessCreate:
      if (ZQABasUtlUrlParser::IsUrl(name)) rfm_FileReadOnlyExc(name).Throw(kSourcePath, __LINE__);
      Inform(logify, "*** Informational: Creating File based ZDB.\n");
      return rfm_File(new rfm_FileReprLocal(name, utl_FileAccessCreate, preallocate));
  }
  ZQA_ASSERT(kSourcePath, !"Incorrect file access.");
  return rfm_File();
}

rfm_File rfm_File::Open(cow_String const& name, cow_String const& key) {
  return OpenForReading(name, key, true, Logify());
}

rfm_File rfm_File::CreateCompressed(cow_String const& name) {
  bool logify = Logify();
  if (ZQABasUtlUrlParser::IsUrl(name)) rfm_FileReadOnlyExc(name).Throw(kSourcePath, __LINE__);
  Inform(logify, "*** Informational: Creating Compressed File based MDB.\n");
  return rfm_File(new rfm_FileReprEncoded(name, NewCodec(), rfm_FileReprEncoded::kDefaultSegmentSize));
}

void rfm_File::Copy(rfm_File const& source) {
  char block[kCopyBlockSize];
  for (;;) {
    int got = source->Read(block, kCopyBlockSize);
    if (got == 0) break;
    Repr()->Write(block, got);
  }
}

bool rfm_File::ReadOnly() const { return m_Repr.GetRef().ReadOnly(); }
cow_String rfm_File::FileName() const { return m_Repr.GetRef().FileName(); }
rfm_FileKind rfm_File::Kind() const { return m_Repr.GetRef().Kind(); }

utl_FileOffset rfm_File::Length() const { return m_Repr.GetRef().Length(); }
utl_FileOffset rfm_File::Location() const { return m_Repr.GetRef().Location(); }
void rfm_File::Seek(utl_FileOffset offset) const { m_Repr.GetRef().Seek(offset); }
void rfm_File::Flush() const { m_Repr.GetRef().Flush(); }
int rfm_File::Read(char* buffer, int count) const { return m_Repr.GetRef().Read(buffer, count); }
int rfm_File::Write(char const* buffer, int count) const { return m_Repr.GetRef().Write(buffer, count); }
int rfm_File::ReadInt() const { return m_Repr.GetRef().ReadInt(); }
float rfm_File::ReadFloat() const { return m_Repr.GetRef().ReadFloat(); }
double rfm_File::ReadDouble() const { return m_Repr.GetRef().ReadDouble(); }
cow_String rfm_File::ReadFixedString(int width) const { return m_Repr.GetRef().ReadFixedString(width); }
int rfm_File::ReadIntArray(int* values, int count) const { return m_Repr.GetRef().ReadIntArray(values, count); }
int rfm_File::ReadFloatArray(float* values, int count) const { return m_Repr.GetRef().ReadFloatArray(values, count); }
int rfm_File::ReadDoubleArray(double* values, int count) const {
  return m_Repr.GetRef().ReadDoubleArray(values, count);
}
void rfm_File::WriteInt(int value) const { m_Repr.GetRef().WriteInt(value); }
void rfm_File::WriteFloat(float value) const { m_Repr.GetRef().WriteFloat(value); }
void rfm_File::WriteDouble(double value) const { m_Repr.GetRef().WriteDouble(value); }
void rfm_File::WriteFixedString(cow_String const& text, int width) const {
  m_Repr.GetRef().WriteFixedString(text, width);
}
void rfm_File::WriteIntArray(int const* values, int count) const { m_Repr.GetRef().WriteIntArray(values, count); }
void rfm_File::WriteFloatArray(float const* values, int count) const {
  m_Repr.GetRef().WriteFloatArray(values, count);
}
void rfm_File::WriteDoubleArray(double const* values, int count) const {
  m_Repr.GetRef().WriteDoubleArray(values, count);
}
