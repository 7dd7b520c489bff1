#ifndef cls_AgentBlob_h
#define cls_AgentBlob_h

// An unstructured byte store in a database, read and written like a file
// from a position: what the mementos' MakeAgentBlob answers. The receiver
// deletes it when NeedsDeletion() says so. The array forms move numbers in
// the file's byte order.
class cls_AgentBlob {
public:
  cls_AgentBlob() = default;
  cls_AgentBlob(cls_AgentBlob const&) = delete;
  cls_AgentBlob& operator=(cls_AgentBlob const&) = delete;
  virtual ~cls_AgentBlob() = default;

  virtual long long Length() const = 0;
  virtual void Seek(long long const& offset) const = 0;
  // Both answer the number of bytes moved.
  virtual int Read(char* buffer, int count) const = 0;
  virtual int Write(char const* buffer, int count) = 0;
  // These answer the number of values read.
  virtual int ReadIntArray(int* values, int count) const = 0;
  virtual int ReadFloatArray(float* values, int count) const = 0;
  virtual int ReadDoubleArray(double* values, int count) const = 0;
  virtual void WriteIntArray(int const* values, int count) = 0;
  virtual void WriteFloatArray(float const* values, int count) = 0;
  virtual void WriteDoubleArray(double const* values, int count) = 0;
  virtual bool NeedsDeletion() const { return true; }
  // Cuts the blob at the current position: what rewriting a blob with
  // fewer bytes needs.
  virtual void Truncate() = 0;
};

#endif
