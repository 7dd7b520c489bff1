#ifndef cls_Received_h
#define cls_Received_h

// Holds what a Make... operation of a memento answered (a memento, a list's
// reader or writer, a blob) for one scope, and deletes it at the end when
// the object says that whoever received it must (NeedsDeletion). Null when
// the operation answered nothing.
template <class T>
class cls_Received {
public:
  explicit cls_Received(T* received) : m_Received(received) {}
  cls_Received(cls_Received const&) = delete;
  cls_Received& operator=(cls_Received const&) = delete;
  ~cls_Received() {
    if (m_Received != nullptr && m_Received->NeedsDeletion()) delete m_Received;
  }

  explicit operator bool() const { return m_Received != nullptr; }
  T* Get() const { return m_Received; }
  T* operator->() const { return m_Received; }
  T& operator*() const { return *m_Received; }

private:
  T* m_Received;
};

#endif
