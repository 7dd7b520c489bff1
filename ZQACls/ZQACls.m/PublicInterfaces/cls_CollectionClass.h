#ifndef cls_CollectionClass_h
#define cls_CollectionClass_h

// The object layer's own classes, whose rows hold collections: a member that
// is a list or a blob refers to a row of one of them, and that row holds the
// handle of the store of the elements. Stored in files: the values never
// change.
constexpr unsigned int cls_kListClass = 0x230001;
constexpr unsigned int cls_kMapClass = 0x230002;
constexpr unsigned int cls_kCowClass = 0x230003;
constexpr unsigned int cls_kDoubleCollectionClass = 0x230004;
constexpr unsigned int cls_kBlobClass = 0x230005;

#endif
