#include "zqapy_Stream.h"

#include "rfm_TypeName.h"
#include "zqapy_Strings.h"
#include "zqapy_Types.h"

#include <limits>

namespace py = pybind11;

zqapy_Stream::zqapy_Stream(std::shared_ptr<zqapy_Session> const& session, rfm_TaggedStream const& stream)
    : m_Session(session), m_Stream(stream) {}

zqapy_Stream::~zqapy_Stream() {
  zqapy_Locked lock;
  m_Stream = rfm_TaggedStream();
}

std::shared_ptr<zqapy_Stream> zqapy_Stream::Open(std::shared_ptr<zqapy_Session> const& session, int handle) {
  zqapy_Locked lock;
  return session->Guard([&] {
    session->ObjectType(handle, {rfm_TypeStream}, "tagged stream");
    rfm_TaggedStream const opened = session->Database().TaggedStream(rfm_Handle(handle), 0);
    return session->Track(std::shared_ptr<zqapy_Stream>(new zqapy_Stream(session, opened)));
  });
}

std::shared_ptr<zqapy_Stream> zqapy_Stream::Create(std::shared_ptr<zqapy_Session> const& session) {
  zqapy_Locked lock;
  return session->Guard([&] {
    rfm_TaggedStream const created = session->Database().TaggedStream(0);
    return session->Track(std::shared_ptr<zqapy_Stream>(new zqapy_Stream(session, created)));
  });
}

rfm_TaggedStream const& zqapy_Stream::Stream() const {
  if (m_Stream.IsNull()) throw zqapy_Error(m_Session->Name(), "the tagged stream's file is closed");
  return m_Stream;
}

int zqapy_Stream::Handle() const {
  zqapy_Locked lock;
  return Stream().Handle().Value();
}

py::list zqapy_Stream::Items() {
  zqapy_Locked lock;
  py::list items;
  m_Session->Guard([&] {
    rfm_TaggedStream const& stream = Stream();
    stream.Rewind();
    while (stream.Next()) {
      int const type = stream.GetType();
      py::object value;
      switch (type) {
        case rfm_TypeInt:
          value = py::int_(stream.GetInt());
          break;
        case rfm_TypeFloat:
          value = py::float_(stream.GetFloat());
          break;
        case rfm_TypeDouble:
          value = py::float_(stream.GetDouble());
          break;
        case rfm_TypeHandle:
          value = py::int_(stream.GetHandle().Value());
          break;
        default:
          value = zqapy_ToPython(stream.GetString());
          break;
      }
      char const* name = type == rfm_TaggedStream::kFixedStringType ? "string" : rfm_TypeName(static_cast<rfm_Type>(type));
      items.append(py::make_tuple(stream.GetID(), name, value));
    }
  });
  return items;
}

void zqapy_Stream::Append(py::list const& items) {
  zqapy_Locked lock;
  m_Session->Guard([&] {
    rfm_TaggedStream const& stream = Stream();
    // Items go where the stream stands: after the last one read.
    stream.Rewind();
    while (stream.Next()) {
    }
    for (py::handle item : items) {
      auto const triple = py::cast<py::tuple>(item);
      int const tag = py::cast<int>(triple[0]);
      rfm_Type const type = zqapy_TypeOf(py::cast<std::string>(triple[1]));
      py::handle const value = triple[2];
      switch (type) {
        case rfm_TypeInt:
          stream.WriteInt(tag, py::cast<int>(value));
          break;
        case rfm_TypeFloat:
          stream.WriteFloat(tag, py::cast<float>(value));
          break;
        case rfm_TypeDouble:
          stream.WriteDouble(tag, py::cast<double>(value));
          break;
        case rfm_TypeHandle:
          stream.WriteHandle(tag, rfm_Handle(py::cast<int>(value)));
          break;
        default:
          stream.WriteString(tag, zqapy_FromPython(value));
          break;
      }
    }
  });
}

void zqapy_Stream::Snap() { Stream().Snap(); }

void zqapy_Stream::Flush() { Stream().Flush(); }

void zqapy_Stream::Close() { m_Stream = rfm_TaggedStream(); }
