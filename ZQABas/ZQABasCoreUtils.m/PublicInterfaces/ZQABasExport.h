#ifndef ZQABasExport_h
#define ZQABasExport_h

// The library is built with hidden visibility; ZQA_EXPORT marks the classes
// and functions that form its boundary.
#define ZQA_EXPORT __attribute__((visibility("default")))

#endif
