#include "atr_SubstituteFormat.h"
#include "utl_File.h"
#include "zdb_TestFiles.h"
#include "zdb_TestTool.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <sys/stat.h>

namespace {

// What zdb watch told next, without the time of day before it.
std::string Told(zdb_Tool& watch) {
  std::string line = watch.ReadLine(10);
  if (line.size() < 9 || line[2] != ':' || line[5] != ':' || line[8] != ' ') return "no line: " + line;
  return line.substr(9);
}

}  // namespace

TEST(ZdbWatchTest, AReaderBesideAWriterIsToldOfFlushesTransactionsAReplacementAndARemoval) {
  zqa_TestDir dir;
  cow_String name = dir.File("job.zdb");
  cow_String replacement = dir.File("next.zdb");
  zqa_Signal go;
  zqa_Signal done;
  int writer = zqa_StartChild([&] {
    {
      rfm_Database database =
          rfm_Database::Create(rfm_File::Open(name, utl_FileAccessCreate, false), "JOB", "watched", 1700000000);
      database.Flush();
      done.Send();
      go.Wait();
      database.Flush();
      done.Send();
      go.Wait();
      database.ReaderSemaphoreSet();
      done.Send();
      go.Wait();
      database.Flush();
      database.ReaderSemaphoreClear();
      done.Send();
      go.Wait();
    }
    done.Send();
    go.Wait();
    rfm_Database::Create(rfm_File::Open(replacement, utl_FileAccessCreate, false), "JOB", "next", 1700000500);
    std::rename(replacement.CStr(), name.CStr());
    done.Send();
    go.Wait();
    std::remove(name.CStr());
    done.Send();
  });
  done.Wait();
  zdb_Tool watch({"watch", name.CStr(), "--interval", "0.02"});
  EXPECT_EQ(std::string("watching ") + name.CStr() + ", flush count 1", Told(watch));
  go.Send();
  done.Wait();
  EXPECT_EQ("flush count 2", Told(watch));
  go.Send();
  done.Wait();
  EXPECT_EQ("transaction running", Told(watch));
  go.Send();
  done.Wait();
  EXPECT_EQ("transaction ended", Told(watch));
  EXPECT_EQ("flush count 3", Told(watch));
  go.Send();
  done.Wait();
  EXPECT_EQ("flush count 4", Told(watch)) << "closing flushes once more";
  go.Send();
  done.Wait();
  EXPECT_EQ("file replaced", Told(watch));
  EXPECT_EQ("watching the new file, flush count 1", Told(watch));
  go.Send();
  done.Wait();
  EXPECT_EQ("file unreadable: " + std::string(name.CStr()) + ": *** ERROR: No such file: " + name.CStr() + ".",
            Told(watch));
  EXPECT_EQ(0, zqa_WaitChild(writer));
  watch.Signal(SIGINT);
  zdb_Run end = watch.Finish();
  EXPECT_EQ(0, end.m_Status);
  EXPECT_EQ("", end.m_Out) << "nothing more after an interrupt";
  EXPECT_EQ("", end.m_Err);
}

TEST(ZdbWatchTest, ACompressedFileIsRefusedSinceItsReadersDoNotFollowAWriter) {
  zqa_TestDir dir;
  zdb_Sample sample = MakeSample(dir.File("sample.zdb"), rfm_TestFileKind::Compressed);
  zdb_Run run = RunZdb({"watch", sample.m_Name, "--interval", "0.02"});
  EXPECT_EQ(1, run.m_Status);
  EXPECT_EQ("", run.m_Out);
  EXPECT_EQ("zdb watch: " + sample.m_Name +
                ": is compressed, and a compressed file is read as it was when opened: its readers do not follow a "
                "writer\n",
            run.m_Err);
}

// A file replaced by a FIFO without a writer is told unreadable, with the
// reason, and the watch goes on: a database in its place again is watched.
TEST(ZdbWatchTest, AFileReplacedByAFifoIsToldUnreadableWithoutBlocking) {
  zqa_TestDir dir;
  cow_String name = dir.File("job.zdb");
  cow_String fifo = dir.File("fifo");
  cow_String replacement = dir.File("next.zdb");
  rfm_Database::Create(rfm_File::Open(name, utl_FileAccessCreate, false), "JOB", "watched", 1700000000);
  ASSERT_EQ(0, ::mkfifo(fifo.CStr(), 0600));
  zdb_Tool watch({"watch", name.CStr(), "--interval", "0.02"});
  EXPECT_EQ(std::string("watching ") + name.CStr() + ", flush count 1", Told(watch));
  ASSERT_EQ(0, std::rename(fifo.CStr(), name.CStr()));
  EXPECT_EQ("file unreadable: " + std::string(name.CStr()) + ": " +
                atr_SubstituteFormat(utl_File::kNotRegularFileText, name).CStr(),
            Told(watch));
  rfm_Database::Create(rfm_File::Open(replacement, utl_FileAccessCreate, false), "JOB", "next", 1700000500);
  ASSERT_EQ(0, std::rename(replacement.CStr(), name.CStr()));
  EXPECT_EQ("file replaced", Told(watch));
  EXPECT_EQ("watching the new file, flush count 1", Told(watch));
  watch.Signal(SIGINT);
  zdb_Run end = watch.FinishWithin(30);
  EXPECT_EQ(0, end.m_Status);
  EXPECT_EQ("", end.m_Err);
}
