#ifndef rom_StorageTypeTag_h
#define rom_StorageTypeTag_h

// Names the object layer's kind of storage for cls_StorageType: an agent
// that meets a memento of the kind cls_StorageType<rom_StorageTypeTag>::Id()
// answers knows that the memento is a rom_MementoWrite.
struct rom_StorageTypeTag {};

#endif
