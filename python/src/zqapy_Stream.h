#ifndef zqapy_Stream_h
#define zqapy_Stream_h

#include "rfm_TaggedStream.h"
#include "zqapy_Session.h"

#include <pybind11/pybind11.h>

#include <memory>

// A tagged stream of an open file as Python uses it: its items as
// (tag, type name, value) triples, read from the start or appended.
class zqapy_Stream : public zqapy_Object {
public:
  static std::shared_ptr<zqapy_Stream> Open(std::shared_ptr<zqapy_Session> const& session, int handle);
  static std::shared_ptr<zqapy_Stream> Create(std::shared_ptr<zqapy_Session> const& session);
  ~zqapy_Stream() override;

  int Handle() const;
  // Every item from the start: (tag, type name, value), the value an int,
  // a float, an int for a handle, or a str (also for a fixed string).
  pybind11::list Items();
  // Writes items after the last: (tag, type name, value) each, the type
  // one of "int", "float", "double", "handle", "string".
  void Append(pybind11::list const& items);

  void Snap() override;
  void Flush() override;
  void Close() override;

private:
  zqapy_Stream(std::shared_ptr<zqapy_Session> const& session, rfm_TaggedStream const& stream);
  rfm_TaggedStream const& Stream() const;

  std::shared_ptr<zqapy_Session> m_Session;
  rfm_TaggedStream m_Stream;
};

#endif
