#include "rfm_DatabaseReprFile.h"

#include "ZQABasAssert.h"
#include "atr_SubstituteFormat.h"
#include "atr_translate.h"
#include "rfm_Block0.h"
#include "rfm_ChangeCount.h"
#include "rfm_DBMetadata.h"
#include "rfm_DestructorFlush.h"
#include "rfm_GroupLayout.h"
#include "rfm_ObjectMagic.h"
#include "rfm_SpaceReprFile.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <exception>
#include <thread>

namespace {

char const kSourcePath[] = "ZQARom/ZQARomRfm.m/src/rfm_DatabaseReprFile";

[[noreturn]] void Raise(int line, atr_String const& text) { nex_ThrowMessage(kSourcePath, line, text); }

// How often a reader reads the groups for one Snap, or for one try of an
// Open, before it takes them to be moving under a writer's flush; and how
// often an Open pauses and tries again, each pause twice as long as the last
// up to 64 milliseconds: some 13 seconds in all.
constexpr int kSnapReadings = 4;
constexpr int kOpenPauses = 200;
constexpr int kLongestOpenPauseMilliseconds = 64;

// The application magic as stored: at most its first four characters.
cow_String ApplicationMagic(cow_String const& magic) { return magic.Substr(0, kRfmApplicationMagicSize); }

// Reads block 0's magic into a zeroed buffer of 9 bytes.
void ReadMagic(rfm_FileRepr& file, char (&magic)[kRfmMagicSize + 1]) {
  std::memset(magic, 0, sizeof magic);
  file.Seek(kRfmMagicOffset);
  file.Read(magic, kRfmMagicSize);
}

bool StartsWith(char const* text, char const* prefix) { return std::strncmp(text, prefix, std::strlen(prefix)) == 0; }

// Whether the application magic after "ZKRR" is exactly the wanted one; an
// empty wanted magic accepts any.
bool ApplicationMagicMatches(char const (&stored)[kRfmMagicSize + 1], cow_String const& wanted) {
  if (wanted.Empty()) return true;
  cow_String expected = ApplicationMagic(wanted);
  char const* application = stored + std::strlen(kRfmDatabaseMagic);
  return expected == application;
}

}  // namespace

rfm_DatabaseReprFile::rfm_DatabaseReprFile(rfm_File const& file) : m_File(file), m_Linkages(*m_File.Repr()) {}

rfm_DatabaseReprFile::~rfm_DatabaseReprFile() {
  // A failure to close leaves the file at the state of its last successful
  // flush. So does an exception on its way out (a write failed on a full
  // disk): the objects may be halfway through a change, and a flush now
  // would vouch for that half.
  if (m_Opened && std::uncaught_exceptions() == 0) rfm_FlushInDestructor([this] { Close(); });
  // The catalogue writes strings to the pool, so it goes first.
  delete m_Metadata;
  m_Metadata = nullptr;
}

// W7.
void rfm_DatabaseReprFile::Close() {
  rfm_FileRepr& file = File();
  if (!ReadOnly()) {
    file.Seek(kRfmClosingWordOffset);
    file.WriteInt(0);
  }
  Flush();
  if (!ReadOnly()) {
    file.Trim();
    file.FTPCheckSet(kRfmFtpRecordOffset);
  }
}

void rfm_DatabaseReprFile::RaiseCorrupt(int line) const { m_Linkages.RaiseCorrupt(line); }

void rfm_DatabaseReprFile::Create(cow_String const& magic, cow_String const& description, long creationTime) {
  rfm_FileRepr& file = File();
  m_Linkages.ExtendFile(kRfmBlock0Size);
  char zeros[kRfmBlock0Size] = {};
  file.Write(zeros, kRfmBlock0Size);
  file.Seek(kRfmMagicOffset);
  file.WriteFixedString(cow_String(kRfmDatabaseMagic).Append(ApplicationMagic(magic)), kRfmMagicSize);
  file.WriteInt(kRfmFormatVersion);
  file.WriteFixedString(description, kRfmDescriptionSize);
  // The closing word, the transfer record and the flush count start at zero.
  for (int offset = kRfmClosingWordOffset; offset <= kRfmFlushCountOffset; offset += 4) file.WriteInt(0);
  file.WriteInt(static_cast<int>(creationTime));

  m_Linkages.Create();

  m_StringManager.Open(NewWellKnownSpace(kRfmStringPoolMagic));
  // Handle 2 is reserved: a space made and dropped at once.
  delete Space(-1);
  m_Metadata = new rfm_DBMetadata(NewWellKnownSpace(kRfmMetadataMagic));
  m_Opened = true;
}

void rfm_DatabaseReprFile::Open(cow_String const& magic) {
  rfm_FileRepr& file = File();
  char stored[kRfmMagicSize + 1];
  ReadMagic(file, stored);
  if (StartsWith(stored, kRfmOldFormatMagic)) {
    Raise(__LINE__, atr_SubstituteFormat(
                        atr_translate("***ERROR: \"%s\"\nis an old format Zorbex database file.\ndatabase files "
                                      "generated with an Zorbex analysis \nrelease prior to 6.1-1 cannot be opened "
                                      "with \nthe current release of Zorbex/Viewer. \nPlease rerun the analysis "
                                      "using the current \nZorbex analysis release."),
                        FileName()));
  }
  if (!StartsWith(stored, kRfmDatabaseMagic)) {
    Raise(__LINE__, atr_SubstituteFormat(atr_translate("***ERROR: \"%s\"  is not an Zorbex database file."),
                                         FileName()));
  }
  if (!ApplicationMagicMatches(stored, magic)) {
    Raise(__LINE__, atr_SubstituteFormat(atr_translate("***ERROR: Incorrect magic number in file: \"%s\"  ."),
                                         FileName()));
  }
  // Block 0 and the first group must be there before anything is read from them.
  if (file.LengthPysical() < kRfmBlock0Size + kRfmGroupSize) RaiseCorrupt(__LINE__);
  file.Seek(kRfmVersionOffset);
  int version = file.ReadInt();
  if (version < kRfmOldestReadableVersion) {
    Raise(__LINE__, atr_SubstituteFormat(
                        atr_translate("***ERROR: Wrong Zorbex database file version, %d;  Expected version %d."),
                        version, kRfmFormatVersion));
  }
  file.Seek(kRfmFlushCountOffset);
  m_FlushCount = file.ReadInt();
  file.FTPCheckCheck(kRfmFtpRecordOffset);

  if (!ReadOnly()) {
    m_Linkages.Load();
  } else {
    LoadSteadyLinkages();
  }
  // Bytes the file claims beyond the database's end and does not store are
  // no part of it, written by no one: a damaged count in a compressed
  // file's header. Whoever copied or checked the whole file would work
  // through all of them.
  if (file.LengthLogical() > std::max(LogicalEnd(), file.LengthStored())) RaiseCorrupt(__LINE__);
  m_StringManager.Open(OpenWellKnownSpace(kRfmStringPoolHandle, kRfmStringPoolMagic,
                                         "***ERROR: String space object is not where it belongs."));
  m_Metadata = new rfm_DBMetadata(OpenWellKnownSpace(kRfmMetadataHandle, kRfmMetadataMagic,
                                                     "***ERROR: Metadata table object is not where it belongs."));
  m_Metadata->Load();
  m_Opened = true;
}

// R4 at Open: a file that moves under every reading is no damage. A reader
// that cannot wait for the next Snap pauses, which gives a writer that never
// rests the time to end the flush under way, and reads again; only a file
// that never holds still for the readings of one try is refused.
void rfm_DatabaseReprFile::LoadSteadyLinkages() {
  for (int pause = 0; !m_Linkages.LoadSteady(kSnapReadings); ++pause) {
    if (pause == kOpenPauses) {
      Raise(__LINE__, atr_SubstituteFormat(atr_translate("***ERROR: Unable to read %s: it kept changing while it "
                                                         "was opened, as under a writer that flushes without pause."),
                                           FileName()));
    }
    int const milliseconds = std::min(1 << std::min(pause, 6), kLongestOpenPauseMilliseconds);
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
  }
}

rfm_SpaceRepr* rfm_DatabaseReprFile::OpenWellKnownSpace(int handle, std::uint32_t magic, char const* misplacedText) {
  std::unique_ptr<rfm_SpaceRepr> space(Space(rfm_Handle(handle), -1));
  int first = 0;
  if (space->ReadIntArray(&first, 1) < 1 || static_cast<std::uint32_t>(first) != magic) {
    Raise(__LINE__, atr_translate(misplacedText));
  }
  return space.release();
}

rfm_SpaceRepr* rfm_DatabaseReprFile::NewWellKnownSpace(std::uint32_t magic) {
  std::unique_ptr<rfm_SpaceRepr> space(Space(-1));
  space->WriteInt(static_cast<int>(magic));
  return space.release();
}

bool rfm_DatabaseReprFile::IsMagic(rfm_File const& file, cow_String const& magic) {
  char stored[kRfmMagicSize + 1];
  ReadMagic(*file.Repr(), stored);
  return StartsWith(stored, kRfmDatabaseMagic) && ApplicationMagicMatches(stored, magic);
}

long rfm_DatabaseReprFile::GetCreationTime(rfm_File const& file) {
  file->Seek(kRfmVersionOffset);
  if (file->ReadInt() < kRfmFirstVersionWithCreationTime) return 0;
  file->Seek(kRfmCreationTimeOffset);
  return file->ReadInt();
}

void rfm_DatabaseReprFile::SetCreationTime(long creationTime) {
  File().Seek(kRfmCreationTimeOffset);
  File().WriteInt(static_cast<int>(creationTime));
}

cow_String rfm_DatabaseReprFile::Description() const {
  File().Seek(kRfmDescriptionOffset);
  cow_String field = File().ReadFixedString(kRfmDescriptionSize);
  // The field is zero-filled: the description is the text before the first zero.
  return field.Substr(0, static_cast<int>(std::strlen(field.CStr())));
}

rfm_Handle rfm_DatabaseReprFile::RootTableHandle() const { return rfm_Handle(kRfmRootTableHandle); }

rfm_Handle rfm_DatabaseReprFile::RootTableHandle2() const { return rfm_Handle(kRfmRootTableHandle2); }

// The writer's flush: W1 for the catalogue and the pool, W2 for the groups,
// W3 for the count.
void rfm_DatabaseReprFile::Flush() {
  // The catalogue's records bring new strings to the pool: it goes first.
  m_Metadata->Flush();
  m_StringManager.Flush();
  if (ReadOnly()) return;
  m_Linkages.Write();
  File().Seek(kRfmFlushCountOffset);
  m_FlushCount = rfm_NextCount(m_FlushCount);
  File().WriteInt(m_FlushCount);
  File().Flush();
}

// A reader's refresh: R2, then the groups by R3 and R4, then the catalogue.
bool rfm_DatabaseReprFile::Snap() {
  if (!ReadOnly()) return false;
  if (File().ReaderSemaphore()) return false;
  int flushCount = ReadFlushCount();
  if (flushCount == m_FlushCount) return false;
  utl_FileOffset metadataLength = m_Metadata->Length();
  if (!m_Linkages.LoadSteady(kSnapReadings)) return false;
  // R5: the picture is of the flush counted or later; a later flush's
  // count is news to the next Snap, which reads again.
  m_FlushCount = flushCount;
  if (m_Metadata->Length() != metadataLength) m_Metadata->Load();
  return true;
}

int rfm_DatabaseReprFile::ReadFlushCount() {
  File().Seek(kRfmFlushCountOffset);
  return File().ReadInt();
}

rfm_SpaceRepr* rfm_DatabaseReprFile::Space(int quantum) {
  return new rfm_SpaceReprFile(m_Linkages, &m_StringManager, quantum);
}

rfm_SpaceRepr* rfm_DatabaseReprFile::Space(rfm_Handle const& handle, int quantum) {
  return new rfm_SpaceReprFile(m_Linkages, &m_StringManager, handle, quantum);
}

cow_List<rfm_Handle> rfm_DatabaseReprFile::ObjectHandles() const { return m_Linkages.ObjectHandles(); }

int rfm_DatabaseReprFile::ExtentCount(rfm_Handle const& handle) const { return m_Linkages.ExtentCount(handle); }

utl_FileOffset rfm_DatabaseReprFile::LogicalEnd() const { return m_Linkages.LogicalEnd(); }

cow_List<cow_String> rfm_DatabaseReprFile::GetObjStatistics(rfm_Handle const& handle) const {
  cow_List<cow_String> statistics;
  if (!m_Linkages.HandleOk(handle)) return statistics;
  statistics.Append(atr_SubstituteFormat("Linkage_Count=%d", m_Linkages.LinkageCount(handle)));
  return statistics;
}

cow_List<cow_String> rfm_DatabaseReprFile::GetDBStatistics() const {
  cow_List<cow_String> statistics;
  statistics.Append(atr_SubstituteFormat("Block 0 Size (bytes)=%d", kRfmBlock0Size));
  statistics.Append(atr_SubstituteFormat("Total Linkage Usage (bytes)=%20.0lf",
                                         static_cast<double>(m_Linkages.GroupCount()) * kRfmGroupSize));
  statistics.Append(atr_SubstituteFormat("Metadata Pool Size (bytes)=%20.0lf",
                                         static_cast<double>(m_Metadata->Length())));
  statistics.Append(atr_SubstituteFormat("String Pool Size (bytes)=%20.0lf",
                                         static_cast<double>(m_StringManager.EndOffset())));
  statistics.Append(atr_SubstituteFormat("String Pool Count (number of strings)=%d", m_StringManager.Count()));
  cow_List<cow_String> pool = GetObjStatistics(rfm_Handle(kRfmStringPoolHandle));
  statistics.Append(atr_SubstituteFormat("String Pool %s", pool.IsEmpty() ? cow_String() : pool.First()));
  return statistics;
}

cow_String rfm_DatabaseReprFile::GetObjectLocationReport(utl_FileOffset const& offset) const {
  cow_List<rfm_Handle> heads = ObjectHandles();
  for (int i = 0; i < heads.Length(); ++i) {
    rfm_Handle head = heads[i];
    utl_FileOffset before = 0;
    int steps = 0;
    for (rfm_Handle link = head; !link.IsNull() && steps <= m_Linkages.ChainLimit(); ++steps) {
      rfm_Linkage const& extent = m_Linkages.Linkage(link);
      if (extent.m_Location == 0) break;
      if (extent.m_Location <= offset && offset < extent.m_Location + extent.m_Length) {
        return atr_SubstituteFormat("Object: %08x - Offset: %20.0lf", head.Value(),
                                    static_cast<double>(before + offset - extent.m_Location));
      }
      before += extent.m_Length;
      link = extent.m_Next;
    }
  }
  return atr_translate("Object not found.");
}
