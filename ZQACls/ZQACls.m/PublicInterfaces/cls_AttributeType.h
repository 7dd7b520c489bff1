#ifndef cls_AttributeType_h
#define cls_AttributeType_h

// The class id that means no class: a root class's base class, or the class
// of a null reference.
constexpr unsigned int cls_kNoClass = 1;

// What an attribute of a persistent class holds, and with it the columns it
// takes in the class's table: integers one int column, float and double
// their own, strings and enumerations (stored as their text) a string
// column, references an object id and a class id, collections the handle of
// the object that stores them. The values are stored in class metadata that
// other programs read: they never change.
enum cls_AttributeType {
  cls_AttrChar = 1,
  cls_AttrUnsignedChar = 2,
  cls_AttrShort = 3,
  cls_AttrUnsignedShort = 4,
  cls_AttrInt = 5,
  cls_AttrLong = 6,  // not storable
  cls_AttrUnsignedInt = 7,
  cls_AttrUnsignedLong = 8,  // not storable
  cls_AttrFloat = 9,
  cls_AttrDouble = 10,
  cls_AttrString = 11,
  cls_AttrText = 12,
  cls_AttrBool = 13,
  cls_AttrEnum = 14,
  cls_AttrObjectCow = 15,  // an object shared copy-on-write
  cls_AttrObjectPtr = 16,  // an object held by pointer
  cls_AttrObjectLazy = 17,  // an object loaded when first asked for
  cls_AttrList = 18,
  cls_AttrMap = 19,
  cls_AttrBlob = 20,
  cls_AttrInternalCow = 21,  // the object layer's own copy-on-write holder
  cls_AttrDoubleCollection = 22,
};

constexpr int cls_kFirstAttributeType = cls_AttrChar;
constexpr int cls_kLastAttributeType = cls_AttrDoubleCollection;

#endif
