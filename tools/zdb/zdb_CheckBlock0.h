#ifndef zdb_CheckBlock0_h
#define zdb_CheckBlock0_h

class zdb_CheckBytes;
class zdb_CheckReport;

// The check of block 0: the database magic, the format version, the flush
// count, and in a plain file the transfer check record, whose length must
// be the file's. Answers false when the file is no database at all, so that
// nothing after block 0 is worth reading.
bool zdb_CheckBlock0(zdb_CheckBytes& bytes, bool compressed, zdb_CheckReport& report);

#endif
