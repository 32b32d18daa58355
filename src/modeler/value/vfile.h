#pragma once

#include "modeler/value.h"

#include <cstddef>
#include <fstream>
#include <set>
#include <string>

// A file opened by a program. Closed by close() or when the last value
// holding it goes.
class VFile : public Reference {
public:
    enum AccessMode { Read, Write, Append };

    // Throws "File '<name>' cannot be opened." on failure.
    VFile(const std::string& name, AccessMode mode);
    ~VFile() override;

    const std::string& getName() const { return name; }
    AccessMode getAccessMode() const { return mode; }

    // Closes the file; a file written to fails here when what it buffered
    // cannot be written (a full device).
    void close();
    // Closes every file still open for writing, failing as close() does:
    // the end of a run must not lose their last lines silently.
    static void closeAllWriters();

    // Longest token and line read from a file or the console: data that
    // never ends one (a binary file, an endless device) is refused rather
    // than read until memory runs out.
    static const size_t kMaxTokenLength = size_t(1) << 20;
    static const size_t kMaxLineLength = size_t(1) << 26;
    // "... longer than N bytes in <where>.", for the readers' errors.
    static std::string tooLong(const char* what, size_t limit, const std::string& where);
    // Skips white space; then true when nothing is left.
    bool eof();
    void skipBlanks();
    // Next token: white space skipped first, stops before the white space
    // that ends it. Fails with "End of file." when nothing is left.
    std::string readString();
    qxint readInt();
    // Rest of the current line without its end of line.
    std::string readln();
    void write(const std::string& text);

private:
    void checkRead() const;
    void checkWrite() const;
    [[noreturn]] void failWrite() const;

    static std::set<VFile*>& openWriters();

    std::string name;
    AccessMode mode;
    std::fstream stream;
};
