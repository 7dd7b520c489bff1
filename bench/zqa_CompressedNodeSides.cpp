#include "zqa_CompressedNodeSides.h"

#include "zqa_Hdf5.h"
#include "rfm_Database.h"
#include "rfm_Table.h"

#include <algorithm>
#include <cstdio>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr int kBatchRows = 64 * 1024;
constexpr hsize_t kChunkRows = 16 * 1024;
constexpr unsigned kDeflateLevel = 6;  // the compressed database file's own level
char const kMagic[] = "BNCH";
char const kTableName[] = "NodeResults";
char const* const kFieldNames[] = {"id", "x", "y", "z", "ux", "uy", "uz"};
constexpr int kFields = 7;

long long FileBytes(std::string const& path) {
  struct stat status;
  zqa_Check(::stat(path.c_str(), &status) == 0, "stat of a bench file");
  return static_cast<long long>(status.st_size);
}

// The handles of the fields named kFieldNames, in that order.
struct NodeHandles {
  explicit NodeHandles(rfm_TableMetadata& layout) {
    handles.emplace_back(layout.DefineIntField(kFieldNames[0]));
    for (int f = 1; f < kFields; ++f) handles.emplace_back(layout.DefineDoubleField(kFieldNames[f]));
  }
  explicit NodeHandles(rfm_Table const& table) {
    for (char const* name : kFieldNames) handles.emplace_back(table.Index(name));
  }
  std::vector<rfm_FieldHandle> handles;
};

hid_t NodeRowType() {
  hid_t row = H5Tcreate(H5T_COMPOUND, sizeof(zqa_NodeRow));
  zqa_Hdf5Check(H5Tinsert(row, "id", HOFFSET(zqa_NodeRow, id), H5T_NATIVE_INT), "HDF5 member id");
  zqa_Hdf5Check(H5Tinsert(row, "unused", HOFFSET(zqa_NodeRow, unused), H5T_NATIVE_INT), "HDF5 member unused");
  zqa_Hdf5Check(H5Tinsert(row, "x", HOFFSET(zqa_NodeRow, x), H5T_NATIVE_DOUBLE), "HDF5 member x");
  zqa_Hdf5Check(H5Tinsert(row, "y", HOFFSET(zqa_NodeRow, y), H5T_NATIVE_DOUBLE), "HDF5 member y");
  zqa_Hdf5Check(H5Tinsert(row, "z", HOFFSET(zqa_NodeRow, z), H5T_NATIVE_DOUBLE), "HDF5 member z");
  zqa_Hdf5Check(H5Tinsert(row, "ux", HOFFSET(zqa_NodeRow, ux), H5T_NATIVE_DOUBLE), "HDF5 member ux");
  zqa_Hdf5Check(H5Tinsert(row, "uy", HOFFSET(zqa_NodeRow, uy), H5T_NATIVE_DOUBLE), "HDF5 member uy");
  zqa_Hdf5Check(H5Tinsert(row, "uz", HOFFSET(zqa_NodeRow, uz), H5T_NATIVE_DOUBLE), "HDF5 member uz");
  return row;
}

}  // namespace

void zqa_CompressedNodeSides::AddSides(zqa_Rounds& rounds) {
  rounds.Side("compressed", [this](zqa_Measures& m) { CompressedSide(m); });
  rounds.Side("hdf5-deflate", [this](zqa_Measures& m) { Hdf5Side("hdf5-deflate", false, m); });
  rounds.Side("hdf5-shuffle", [this](zqa_Measures& m) { Hdf5Side("hdf5-shuffle", true, m); });
}

// Through the bulk path, in batches of 64 Ki rows.
void zqa_CompressedNodeSides::CompressedSide(zqa_Measures& measures) {
  std::string const path = m_Base + "-nodes.zdb";
  std::size_t const batch = kBatchRows;
  std::vector<int> ids(batch);
  std::vector<std::vector<double>> doubles(kFields - 1, std::vector<double>(batch));
  auto fill = [&](int first, int count) {
    for (int k = 0; k < count; ++k) {
      std::size_t const at = static_cast<std::size_t>(k);
      zqa_NodeRow const value = m_Field.At(first + k);
      ids[at] = value.id;
      doubles[0][at] = value.x;
      doubles[1][at] = value.y;
      doubles[2][at] = value.z;
      doubles[3][at] = value.ux;
      doubles[4][at] = value.uy;
      doubles[5][at] = value.uz;
    }
  };
  auto matches = [&](int first, int count) {
    for (int k = 0; k < count; ++k) {
      std::size_t const at = static_cast<std::size_t>(k);
      zqa_NodeRow const read{ids[at],        0,
                             doubles[0][at], doubles[1][at], doubles[2][at],
                             doubles[3][at], doubles[4][at], doubles[5][at]};
      if (!(read == m_Field.At(first + k))) return false;
    }
    return true;
  };
  rfm_Handle handle;
  measures["write"] = zqa_Seconds([&] {
    rfm_Database database = rfm_Database::Create(rfm_File::CreateCompressed(path.c_str()), kMagic, "", 0);
    rfm_TableMetadata layout(kTableName, 1);
    NodeHandles const f(layout);
    std::vector<rfm_Column> columns{rfm_Column::Ints(f.handles[0], static_cast<int const*>(ids.data()))};
    for (int k = 1; k < kFields; ++k) {
      columns.push_back(rfm_Column::Doubles(f.handles[static_cast<std::size_t>(k)],
                                            static_cast<double const*>(doubles[static_cast<std::size_t>(k - 1)].data())));
    }
    rfm_Table table = database.Table(layout, 1 << 20, -1);
    for (int done = 0; done < m_Rows; done += kBatchRows) {
      int const count = std::min(kBatchRows, m_Rows - done);
      fill(done, count);
      table.AppendColumns(count, columns.data(), kFields);
    }
    table.Flush();
    handle = table.Handle();
  });
  m_FileBytes["compressed"] = FileBytes(path);
  measures["read"] = zqa_Seconds([&] {
    rfm_Database database = rfm_Database::Open(rfm_File::Open(path.c_str(), utl_FileAccessRead, false), kMagic);
    rfm_Table table = database.Table(handle, -1, -1);
    NodeHandles const f(table);
    zqa_Check(table.Length() == m_Rows, "compressed table length");
    std::vector<rfm_Column> columns{rfm_Column::Ints(f.handles[0], ids.data())};
    for (int k = 1; k < kFields; ++k) {
      columns.push_back(
          rfm_Column::Doubles(f.handles[static_cast<std::size_t>(k)], doubles[static_cast<std::size_t>(k - 1)].data()));
    }
    for (int done = 0; done < m_Rows; done += kBatchRows) {
      int const count = std::min(kBatchRows, m_Rows - done);
      zqa_Check(table.ReadColumns(done, kBatchRows, columns.data(), kFields) == count, "compressed table read count");
      zqa_Check(matches(done, count), "compressed table rows");
    }
  });
  ::unlink(path.c_str());
}

// Chunks of 16 Ki rows, appended and read in batches of 64 Ki rows.
void zqa_CompressedNodeSides::Hdf5Side(std::string const& side, bool shuffle, zqa_Measures& measures) {
  std::string const path = m_Base + "-" + side + ".h5";
  zqa_Hdf5Id type(NodeRowType(), H5Tclose, "HDF5 node type");
  std::vector<zqa_NodeRow> batch(kBatchRows);
  measures["write"] = zqa_Seconds([&] {
    zqa_Hdf5Id file(zqa_Hdf5CreateFile(path), H5Fclose, "HDF5 create");
    zqa_Hdf5Id space(zqa_Hdf5GrowingSpace(0), H5Sclose, "HDF5 space");
    zqa_Hdf5Id creation(zqa_Hdf5ChunkedCreation(kChunkRows), H5Pclose, "HDF5 creation properties");
    if (shuffle) zqa_Hdf5Check(H5Pset_shuffle(creation), "HDF5 shuffle");
    zqa_Hdf5Check(H5Pset_deflate(creation, kDeflateLevel), "HDF5 deflate");
    zqa_Hdf5Id dataset(H5Dcreate2(file, kTableName, type, space, H5P_DEFAULT, creation, H5P_DEFAULT), H5Dclose,
                       "HDF5 dataset");
    for (int done = 0; done < m_Rows; done += kBatchRows) {
      int const count = std::min(kBatchRows, m_Rows - done);
      for (int k = 0; k < count; ++k) batch[static_cast<std::size_t>(k)] = m_Field.At(done + k);
      zqa_Hdf5Append(dataset, type, static_cast<hsize_t>(done), static_cast<hsize_t>(count), batch.data());
    }
  });
  m_FileBytes[side] = FileBytes(path);
  measures["read"] = zqa_Seconds([&] {
    zqa_Hdf5Id file(zqa_Hdf5OpenFile(path), H5Fclose, "HDF5 open");
    zqa_Hdf5Id dataset(H5Dopen2(file, kTableName, H5P_DEFAULT), H5Dclose, "HDF5 dataset open");
    for (int done = 0; done < m_Rows; done += kBatchRows) {
      int const count = std::min(kBatchRows, m_Rows - done);
      zqa_Hdf5Read(dataset, type, static_cast<hsize_t>(done), static_cast<hsize_t>(count), batch.data());
      for (int k = 0; k < count; ++k) {
        zqa_Check(batch[static_cast<std::size_t>(k)] == m_Field.At(done + k), "HDF5 node row");
      }
    }
  });
  ::unlink(path.c_str());
}

void zqa_CompressedNodeSides::PrintRates(zqa_Rounds const& rounds) const {
  std::vector<std::pair<std::string, double>> const counts = {{"write", m_Rows}, {"read", m_Rows}};
  for (char const* side : {"compressed", "hdf5-deflate", "hdf5-shuffle"}) rounds.PrintRates(side, counts);
  double const rowBytes = static_cast<double>(m_Rows) * sizeof(zqa_NodeRow);
  for (auto const& size : m_FileBytes) {
    std::printf("  %-34s file %.1f MiB, %.3f of the %.1f MiB of rows\n", size.first.c_str(),
                static_cast<double>(size.second) / (1 << 20), static_cast<double>(size.second) / rowBytes,
                rowBytes / (1 << 20));
  }
}

void zqa_CompressedNodeSides::PrintRatios(zqa_Rounds const& rounds) const {
  rounds.PrintRatios("compressed / HDF5 deflate", "compressed", "hdf5-deflate", {"write", "read"});
  rounds.PrintRatios("compressed / HDF5 shuffle", "compressed", "hdf5-shuffle", {"write", "read"});
}
