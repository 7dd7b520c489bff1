#ifndef rfm_Sector_h
#define rfm_Sector_h

class rfm_SectorFile;

// One sector of a sector file, by value. A sector's last four bytes link
// it to the next sector of its chain (-1 at the end); the rest is payload.
// The null sector (number -1) ends every chain.
//
//  offset        size  content
//       0  size - 4    payload
//  size - 4        4   number of the next sector, -1 for none
class rfm_Sector {
public:
  static constexpr int kNull = -1;
  static constexpr int kLinkSize = 4;

  rfm_Sector() = default;
  rfm_Sector(int number, rfm_SectorFile* file) : m_Number(number), m_File(file) {}

  bool IsNull() const { return m_Number == kNull; }
  int Number() const { return m_Number; }
  // The payload's size.
  int Size() const;

  // The next sector of the chain; the null sector is its own next. A link
  // to no existing sector raises the corruption message.
  rfm_Sector Next() const;
  void SetNext(int number) const;
  // The next sector, or a new one linked after this one.
  rfm_Sector Extend() const;

  // Asks the file to read this sector and the ones after it, up to
  // sectors in all, in one go: a chain usually lies in order.
  void Prefetch(int sectors) const;

  // Payload bytes at offset; Read returns the count moved.
  int Read(char* buffer, int count, int offset) const;
  void Write(char const* buffer, int count, int offset) const;

private:
  int m_Number = kNull;
  rfm_SectorFile* m_File = nullptr;
};

#endif
