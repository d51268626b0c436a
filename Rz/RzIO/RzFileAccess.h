// How a file is opened and how a stream position is given: the two
// enumerations that streams and the Mac OS file layer share.
#ifndef RZ_RZIO_RZFILEACCESS_H
#define RZ_RZIO_RZFILEACCESS_H

enum eRzFileSeekMode {
    eRzSeekFromStart = 0,   // offset counts from the beginning
    eRzSeekFromEnd = 1,     // the new position is length minus offset
    eRzSeekFromCurrent = 2  // offset is added to the current position
};

enum eRzFileAccess {
    eRzFileNone = 0,      // no access: a file stream in this state is not open
    eRzFileRead = 1,      // read only
    eRzFileWrite = 2,     // write only; the file is created or truncated
    eRzFileReadWrite = 3  // read and write; created if missing, contents kept
};

#endif
