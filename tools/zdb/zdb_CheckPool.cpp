#include "zdb_CheckPool.h"

#include "rfm_ObjectMagic.h"
#include "zdb_CheckBytes.h"
#include "zdb_CheckReport.h"
#include "zdb_CheckSpace.h"

zdb_CheckPool::zdb_CheckPool(zdb_CheckSpace const* space, zdb_CheckReport& report) : m_Space(space), m_Report(report) {
  Walk();
}

void zdb_CheckPool::Walk() {
  if (m_Space == nullptr) {
    m_Report.Problem(std::string(kSubject) + ": missing");
    return;
  }
  std::int32_t magic = 0;
  if (m_Space->Length() < 4) {
    m_Report.Problem(std::string(kSubject) + ": too short for its first word");
    return;
  }
  if (!m_Space->Word(0, magic)) return;
  if (static_cast<std::uint32_t>(magic) != kRfmStringPoolMagic) {
    m_Report.Problem(zdb_MagicProblem(kSubject, magic, kRfmStringPoolMagic));
    return;
  }
  m_Usable = true;
  utl_FileOffset offset = 4;
  std::int32_t length = 0;
  while (offset < m_Space->Length()) {
    utl_FileOffset room = m_Space->Length() - offset - 4;
    if (room < 0) {
      m_Report.Problem(std::string(kSubject) + ": the record at offset " + std::to_string(offset) + " is cut short");
      return;
    }
    // Bytes that cannot be read have been reported where they lie.
    if (!m_Space->Word(offset, length)) return;
    if (length < 0 || (static_cast<utl_FileOffset>(length) + 3) / 4 * 4 > room) {
      m_Report.Problem(std::string(kSubject) + ": the record at offset " + std::to_string(offset) + " claims " +
                       std::to_string(length) + " characters, more than the pool's " + std::to_string(room) +
                       " remaining bytes");
      return;
    }
    m_Records[offset] = length;
    offset += 4 + (static_cast<utl_FileOffset>(length) + 3) / 4 * 4;
  }
}

bool zdb_CheckPool::Resolve(char const* external, std::string* text) const {
  utl_FileOffset offset = 0;
  if (!zdb_StoredOffset(external, offset)) return false;
  auto found = m_Records.find(offset);
  if (found == m_Records.end()) return false;
  if (text != nullptr) {
    text->resize(static_cast<std::size_t>(found->second));
    if (!text->empty() && !m_Space->Read(offset + 4, text->data(), text->size())) return false;
  }
  return true;
}

std::string zdb_CheckPool::Describe(char const* external) {
  utl_FileOffset offset = 0;
  return "offset " + (zdb_StoredOffset(external, offset) ? std::to_string(offset) : zdb_StoredDoubleText(external));
}
