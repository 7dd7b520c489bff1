#ifndef rfm_SharingProtocol_h
#define rfm_SharingProtocol_h

// One writer and many readers share a database file with no lock and no
// journal. What each side may rely on is numbered here; code and tests cite
// the numbers.
//
// The writer (a database opened for writing):
//   W1  An object's bytes (rows, elements, stream items, pool strings,
//       catalogue records) reach the file before any linkage on disk admits
//       them: objects write their buffers before the database flushes, and
//       the database writes the pool and the catalogue before its groups.
//   W2  A flush writes its groups piece by piece (rfm_LinkageGroups::Write),
//       in an order in which every prefix of its writes leaves groups that
//       describe a prefix of every object: fresh slots without their links;
//       changed locations, links to new groups among them; then the fresh
//       slots' links, which may lead into a new group; the pool's growth, then its
//       links; the catalogue's growth, then its links; every other growth;
//       every other link. A link is written with the growth of the extent
//       it continues, so that an object grows from one flush's end to the
//       next at once.
//   W3  The flush count at offset 512 is the last write of a flush: a count
//       that a reader sees vouches for every group and byte of that flush.
//   W4  A new group lies 1024 bytes past a 4096-byte boundary, as group 0
//       does, so a write cut at a page boundary by a kill leaves no length
//       above its allocation, no half location and no half link; a cut
//       inside slot 109 may leave its growth without its link, a shorter
//       prefix.
//   W5  A linkage taken for a new object starts empty, whatever a killed
//       writer left in the free slot.
//   W6  Around a transaction the writer holds the marker directory (the
//       file's name with ".lsm"): made before its first write, removed after
//       its last flush. A writer that dies inside leaves it.
//   W7  A writer that closes writes 0 at offset 496, flushes, trims the file
//       to its logical length and rewrites the transfer record; with
//       preallocation every real growth rewrites the record after the file
//       has grown.
//
// A reader (a database opened read-only, here or through a URL):
//   R1  A reader never writes to the file, nor to the marker directory.
//   R2  Snap reads the flush count first; an unchanged count answers false
//       and the view stays as it is, with nothing else read.
//   R3  A reader takes linkage groups only from two readings of the group
//       chain that find the same bytes, the second past any cache: the file
//       held still between them, so the first is a picture of one moment,
//       and by W1 and W2 every object it admits has its bytes on disk and
//       every string and record it refers to is admitted. Open does this
//       too, beside a writer that is flushing.
//   R4  A file that moves under every reading is no damage: Snap keeps the
//       old view and answers false, and the next Snap reads again. Only
//       damage found in two equal readings raises the corrupt-file error.
//   R5  After Snap answers true the view is that of the counted flush or of
//       a later state (at most a prefix of the next flush); an object's own
//       Snap brings its sizes to the view, and a table's row count follows
//       its length even when the table's own count moved earlier.
//   R6  While the marker exists, Snap answers false and FileStatus answers
//       4 (a transaction is running). FileStatus never raises: a file it
//       cannot read answers 3.
//   R7  A remote reader's pages that the assistant names stale, because
//       the flush count or the size moved, are dropped before they are read
//       again.
//
// Builds with ZQA_PROTOCOL_CHECKS (debug and sanitizer builds) check the
// cheap ones as they run: W2 and W3 by reading each group a flush wrote
// back before the count is written, R3 by refusing a picture whose group
// chain is shorter than the view it replaces.

#endif
