#ifndef zqa_Hdf5_h
#define zqa_Hdf5_h

// HDF5 identifiers for the comparison programs: each closes itself with its
// own close function, and a failed call ends the run with what it was for.

#include "zqa_Bench.h"

#include <hdf5.h>

#include <string>

class zqa_Hdf5Id {
public:
  using Close = herr_t (*)(hid_t);

  zqa_Hdf5Id(hid_t id, Close close, char const* what) : m_Id(id), m_Close(close) { zqa_Check(id >= 0, what); }
  zqa_Hdf5Id(zqa_Hdf5Id const&) = delete;
  zqa_Hdf5Id& operator=(zqa_Hdf5Id const&) = delete;
  ~zqa_Hdf5Id() { m_Close(m_Id); }

  operator hid_t() const { return m_Id; }

private:
  hid_t m_Id;
  Close m_Close;
};

inline void zqa_Hdf5Check(herr_t status, char const* what) { zqa_Check(status >= 0, what); }

// File access properties an expert sets: the latest file format, whose
// chunk indexes and object headers are the newest and fastest.
inline hid_t zqa_Hdf5LatestFormat() {
  hid_t access = H5Pcreate(H5P_FILE_ACCESS);
  zqa_Check(access >= 0, "HDF5 file access properties");
  zqa_Hdf5Check(H5Pset_libver_bounds(access, H5F_LIBVER_LATEST, H5F_LIBVER_LATEST), "HDF5 latest format");
  return access;
}

inline hid_t zqa_Hdf5CreateFile(std::string const& path) {
  zqa_Hdf5Id access(zqa_Hdf5LatestFormat(), H5Pclose, "HDF5 file access properties");
  return H5Fcreate(path.c_str(), H5F_ACC_TRUNC, H5P_DEFAULT, access);
}

inline hid_t zqa_Hdf5OpenFile(std::string const& path) {
  zqa_Hdf5Id access(zqa_Hdf5LatestFormat(), H5Pclose, "HDF5 file access properties");
  return H5Fopen(path.c_str(), H5F_ACC_RDONLY, access);
}

// Creation properties of a chunked dataset of one dimension: chunks of
// chunkRows, never filled (every element is written before it is read).
inline hid_t zqa_Hdf5ChunkedCreation(hsize_t chunkRows) {
  hid_t creation = H5Pcreate(H5P_DATASET_CREATE);
  zqa_Check(creation >= 0, "HDF5 dataset creation properties");
  zqa_Hdf5Check(H5Pset_chunk(creation, 1, &chunkRows), "HDF5 chunk size");
  zqa_Hdf5Check(H5Pset_fill_time(creation, H5D_FILL_TIME_NEVER), "HDF5 fill time");
  return creation;
}

// A one-dimensional dataspace of rows, growing without limit.
inline hid_t zqa_Hdf5GrowingSpace(hsize_t rows) {
  hsize_t const unlimited = H5S_UNLIMITED;
  return H5Screate_simple(1, &rows, &unlimited);
}

// Writes rows elements of memory type from values at row first of dataset,
// growing it to first + rows.
inline void zqa_Hdf5Append(hid_t dataset, hid_t memoryType, hsize_t first, hsize_t rows, void const* values) {
  hsize_t const size = first + rows;
  zqa_Hdf5Check(H5Dset_extent(dataset, &size), "HDF5 extent");
  zqa_Hdf5Id fileSpace(H5Dget_space(dataset), H5Sclose, "HDF5 file space");
  zqa_Hdf5Check(H5Sselect_hyperslab(fileSpace, H5S_SELECT_SET, &first, nullptr, &rows, nullptr), "HDF5 hyperslab");
  zqa_Hdf5Id memorySpace(H5Screate_simple(1, &rows, nullptr), H5Sclose, "HDF5 memory space");
  zqa_Hdf5Check(H5Dwrite(dataset, memoryType, memorySpace, fileSpace, H5P_DEFAULT, values), "HDF5 write");
}

// Reads rows elements of memory type at row first of dataset into values.
inline void zqa_Hdf5Read(hid_t dataset, hid_t memoryType, hsize_t first, hsize_t rows, void* values) {
  zqa_Hdf5Id fileSpace(H5Dget_space(dataset), H5Sclose, "HDF5 file space");
  zqa_Hdf5Check(H5Sselect_hyperslab(fileSpace, H5S_SELECT_SET, &first, nullptr, &rows, nullptr), "HDF5 hyperslab");
  zqa_Hdf5Id memorySpace(H5Screate_simple(1, &rows, nullptr), H5Sclose, "HDF5 memory space");
  zqa_Hdf5Check(H5Dread(dataset, memoryType, memorySpace, fileSpace, H5P_DEFAULT, values), "HDF5 read");
}

#endif
