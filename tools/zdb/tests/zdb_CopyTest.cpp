#include "zdb_TestFiles.h"
#include "zdb_TestTool.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>

#include <pty.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>

namespace {

bool Exists(std::string const& name) { return ::access(name.c_str(), F_OK) == 0; }

}  // namespace

TEST(ZdbCopyTest, CompressThenDecompressGivesBackTheFileByteForByte) {
  zqa_TestDir dir;
  zdb_Sample sample = MakeSample(dir.File("plain.zdb"));
  std::string const plain = zqa_ReadFileBytes(sample.m_Name.c_str());
  std::string compressed = dir.File("compressed.zdb").CStr();
  std::string restored = dir.File("restored.zdb").CStr();

  zdb_Run compress = RunZdb({"compress", sample.m_Name, compressed});
  ASSERT_EQ(0, compress.m_Status) << compress.m_Err;
  EXPECT_EQ("", compress.m_Err) << "no progress bar when standard error is no terminal";
  std::string const prefix = "compressed " + sample.m_Name + " (" + std::to_string(plain.size()) + " bytes) to " +
                             compressed + " (" + std::to_string(zqa_ReadFileBytes(compressed.c_str()).size()) +
                             " bytes, ";
  EXPECT_EQ(0u, compress.m_Out.find(prefix)) << compress.m_Out;
  EXPECT_EQ(compress.m_Out.size() - 12, compress.m_Out.find("), verified\n")) << compress.m_Out;
  EXPECT_EQ("ZBXTSA00", zqa_ReadFileBytes(compressed.c_str()).substr(0, 8));
  // The logical bytes are the plain file's, with the transfer record a compressed file keeps zero.
  std::string expected = plain;
  expected.replace(500, 12, std::string(12, '\0'));
  EXPECT_EQ(expected, LogicalFileBytes(compressed.c_str()));
  EXPECT_EQ(0, RunZdb({"check", compressed}).m_Status);

  zdb_Run decompress = RunZdb({"decompress", compressed, restored});
  ASSERT_EQ(0, decompress.m_Status) << decompress.m_Err;
  EXPECT_EQ(0u, decompress.m_Out.find("decompressed " + compressed + " (")) << decompress.m_Out;
  EXPECT_EQ(plain, zqa_ReadFileBytes(restored.c_str())) << "the plain copy gets its transfer record back";
}

TEST(ZdbCopyTest, NeitherOverwritesAFileNorCopiesTheWrongKindOrANonDatabase) {
  zqa_TestDir dir;
  zdb_Sample plain = MakeSample(dir.File("plain.zdb"));
  zdb_Sample compressed = MakeSample(dir.File("compressed.zdb"), rfm_TestFileKind::Compressed);
  std::string taken = dir.File("taken.zdb").CStr();
  zqa_WriteFileBytes(taken.c_str(), "keep me");
  std::string fresh = dir.File("fresh.zdb").CStr();
  std::string text = dir.File("notes.txt").CStr();
  zqa_WriteFileBytes(text.c_str(), std::string(20000, 'x'));

  zdb_Run overwrite = RunZdb({"compress", plain.m_Name, taken});
  EXPECT_EQ(1, overwrite.m_Status);
  EXPECT_EQ("zdb compress: " + taken + ": exists already; zdb does not overwrite a file\n", overwrite.m_Err);
  EXPECT_EQ("keep me", zqa_ReadFileBytes(taken.c_str()));

  zdb_Run twice = RunZdb({"compress", compressed.m_Name, fresh});
  EXPECT_EQ(1, twice.m_Status);
  EXPECT_EQ("zdb compress: " + compressed.m_Name + ": is compressed already\n", twice.m_Err);
  zdb_Run plainIn = RunZdb({"decompress", plain.m_Name, fresh});
  EXPECT_EQ(1, plainIn.m_Status);
  EXPECT_EQ("zdb decompress: " + plain.m_Name + ": is not compressed\n", plainIn.m_Err);
  zdb_Run notes = RunZdb({"compress", text, fresh});
  EXPECT_EQ(1, notes.m_Status);
  EXPECT_EQ(0u, notes.m_Err.find("zdb compress: " + text + ": ")) << notes.m_Err;
  EXPECT_FALSE(Exists(fresh));
}

TEST(ZdbCopyTest, AProgressBarShowsOnATerminal) {
  zqa_TestDir dir;
  zdb_Sample sample = MakeSample(dir.File("plain.zdb"));
  std::string compressed = dir.File("compressed.zdb").CStr();
  int terminal = -1;
  pid_t child = ::forkpty(&terminal, nullptr, nullptr, nullptr);
  ASSERT_GE(child, 0);
  if (child == 0) {
    ::execl(ZDB_PROGRAM, ZDB_PROGRAM, "compress", sample.m_Name.c_str(), compressed.c_str(), nullptr);
    ::_exit(127);
  }
  std::string seen;
  char block[4096];
  // The terminal's reading end fails with EIO once the child has closed it.
  for (ssize_t got; (got = ::read(terminal, block, sizeof block)) > 0 || (got < 0 && errno == EINTR);) {
    if (got > 0) seen.append(block, static_cast<std::size_t>(got));
  }
  ::close(terminal);
  int status = 0;
  ASSERT_EQ(child, ::waitpid(child, &status, 0));
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << seen;
  EXPECT_NE(std::string::npos, seen.find("\r[##############################] 100%")) << seen;
}

TEST(ZdbCopyTest, CompressFromAUrlTellsTheSizeTheRemoteFileHas) {
  zqa_TestDir dir;
  zdb_Sample sample = MakeSample(dir.File("plain.zdb"));
  std::string const url = "zbxrdb://localhost/" + sample.m_Name;
  std::string const compressed = dir.File("compressed.zdb").CStr();
  std::string const path = std::string("PATH=") + ZQA_ASSISTANT_DIRECTORY + ":" + std::getenv("PATH");
  zdb_Run run = RunZdb({"compress", url, compressed}, {path});
  ASSERT_EQ(0, run.m_Status) << run.m_Err;
  std::string const size = std::to_string(zqa_ReadFileBytes(sample.m_Name.c_str()).size());
  EXPECT_EQ(0u, run.m_Out.find("compressed " + url + " (" + size + " bytes) to " + compressed + " (")) << run.m_Out;
}

TEST(ZdbCopyTest, ACopyThatRunsOutOfSpaceSaysWhyOnceAndLeavesNoFile) {
  zqa_TestDir dir;
  zdb_Sample sample = MakeSample(dir.File("plain.zdb"));
  std::string const compressed = dir.File("compressed.zdb").CStr();
  std::string const restored = dir.File("restored.zdb").CStr();
  ASSERT_EQ(0, RunZdb({"compress", sample.m_Name, compressed}).m_Status);
  // The child inherits a file size limit below the copies' sizes, and
  // ignores the signal, so that its writes fail with EFBIG.
  rlimit saved;
  ASSERT_EQ(0, ::getrlimit(RLIMIT_FSIZE, &saved));
  rlimit limit = saved;
  limit.rlim_cur = 2048;
  auto const handler = std::signal(SIGXFSZ, SIG_IGN);
  ASSERT_EQ(0, ::setrlimit(RLIMIT_FSIZE, &limit));
  std::string const copies[] = {dir.File("again.zdb").CStr(), restored};
  zdb_Run const compress = RunZdb({"compress", sample.m_Name, copies[0]});
  zdb_Run const decompress = RunZdb({"decompress", compressed, copies[1]});
  ::setrlimit(RLIMIT_FSIZE, &saved);
  std::signal(SIGXFSZ, handler);
  char const* const commands[] = {"compress", "decompress"};
  zdb_Run const* const runs[] = {&compress, &decompress};
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(1, runs[i]->m_Status);
    EXPECT_EQ(std::string("zdb ") + commands[i] + ": " + copies[i] + ": " + std::strerror(EFBIG) +
                  "; the copy was removed\n",
              runs[i]->m_Err);
    EXPECT_FALSE(Exists(copies[i]));
  }
}
