#include "cls_PC.h"

cls_PC::~cls_PC() { UnLink(); }

void cls_PC::Flush() {}

void cls_PC::Disconnect() { UnLink(); }

void cls_PC::Link(cls_PC* head) {
  UnLink();
  m_Next = head;
  m_Prev = head->m_Prev;
  head->m_Prev->m_Next = this;
  head->m_Prev = this;
}

void cls_PC::UnLink() {
  m_Prev->m_Next = m_Next;
  m_Next->m_Prev = m_Prev;
  m_Next = this;
  m_Prev = this;
}
