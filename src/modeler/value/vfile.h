#pragma once

#include "modeler/value.h"

#include <fstream>
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

    void close();
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

    std::string name;
    AccessMode mode;
    std::fstream stream;
};
