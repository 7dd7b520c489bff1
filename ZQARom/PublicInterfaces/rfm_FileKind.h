#ifndef rfm_FileKind_h
#define rfm_FileKind_h

// What holds a file's bytes, as rfm_File::Kind tells it.
enum rfm_FileKind {
  rfm_FileKindPlain = 0,       // a local file that holds the bytes as they are
  rfm_FileKindCompressed = 1,  // a local compressed container of the bytes
  rfm_FileKindRemote = 2,      // a file on any machine, read through a URL in pages
};

#endif
