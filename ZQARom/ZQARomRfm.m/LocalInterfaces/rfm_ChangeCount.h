#ifndef rfm_ChangeCount_h
#define rfm_ChangeCount_h

class rfm_IOBuffer;

// The change count that arrays and tagged streams keep in the word at byte
// 4 of their space. A writer raises it at every flush, whether or not
// anything changed; a reader compares it at Snap to learn whether the
// object moved. Both operations answer the new count, or 0.

// A writer's flush: raises count, writes it, flushes the buffer and goes
// back to where it stood. A reader does nothing and answers 0.
int rfm_FlushChangeCount(rfm_IOBuffer& buffer, int& count);

// A reader's refresh after the database's Snap. When the database's flush
// count is the one last seen, or the stored count has not moved, answers 0;
// in the second case the buffer is left just after the count word, so the
// caller seeks before reading on. Otherwise drops what the buffer read
// ahead, goes back and answers the new count. A writer answers 0.
int rfm_SnapChangeCount(rfm_IOBuffer& buffer, int databaseFlushCount, int& flushCountSeen, int& count);

// The count that follows count, for change counts and for the flush counts
// of tables and of the database alike. A count comes from the file and may
// hold any value: after the largest int comes the smallest, which serves as
// well, since readers only ask whether a count moved.
inline int rfm_NextCount(int count) { return static_cast<int>(static_cast<unsigned int>(count) + 1u); }

#endif
