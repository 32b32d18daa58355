#include "modeler/value/vfile.h"

#include "api/qxexception.h"
#include "modeler/modelerexception.h"
#include "modeler/value/tfile.h"

#include <sys/stat.h>

#include <cctype>

namespace {
const char* const UNIT = "src/modeler/value/vfile";
bool isBlank(int c) { return std::isspace(c) != 0; }
}  // namespace

std::string TFile::toString(Context*, const Value& v, int) const {
    return "(File : " + static_cast<VFile*>(v.getReference())->getName() + ")";
}

VFile::VFile(const std::string& name_, AccessMode mode_)
    : Reference(RefTypes::T_FILE), name(name_), mode(mode_) {
    std::ios::openmode how = mode == Read    ? std::ios::in
                             : mode == Write ? std::ios::out | std::ios::trunc
                                             : std::ios::out | std::ios::app;
    // A folder opens as a stream on some systems and then reads as empty.
    struct stat info;
    if (::stat(name.c_str(), &info) == 0 && S_ISDIR(info.st_mode))
        throw ModelerException("File '" + name + "' cannot be opened: it is a folder.", QX_HERE);
    stream.open(name, how | std::ios::binary);
    if (!stream.is_open())
        throw ModelerException("File '" + name + "' cannot be opened.", QX_HERE);
    if (mode != Read) openWriters().insert(this);
}

VFile::~VFile() {
    openWriters().erase(this);
    if (stream.is_open()) stream.close();
}

std::set<VFile*>& VFile::openWriters() {
    static std::set<VFile*> writers;
    return writers;
}

void VFile::failWrite() const {
    throw ModelerException("Cannot write to file '" + name +
                               "': the device is full or the write failed.",
                           QX_WHERE(UNIT, "write"));
}

void VFile::close() {
    if (!stream.is_open()) return;
    openWriters().erase(this);
    stream.close();
    if (mode != Read && stream.fail()) failWrite();
}

void VFile::closeAllWriters() {
    while (!openWriters().empty()) (*openWriters().begin())->close();
}

std::string VFile::tooLong(const char* what, size_t limit, const std::string& where) {
    return std::string(what) + " longer than " + std::to_string(limit) + " bytes in " + where +
           ".";
}

void VFile::checkRead() const {
    if (mode != Read || !stream.is_open())
        throw ModelerException("Cannot read from file '" + name + "'.", QX_HERE);
}

void VFile::checkWrite() const {
    if (mode == Read || !stream.is_open())
        throw ModelerException("Cannot write to file '" + name + "'.", QX_HERE);
}

void VFile::skipBlanks() {
    checkRead();
    int c;
    while ((c = stream.peek()) != EOF && isBlank(c)) stream.get();
}

bool VFile::eof() {
    skipBlanks();
    return stream.peek() == EOF;
}

std::string VFile::readString() {
    skipBlanks();
    std::string token;
    int c;
    while ((c = stream.peek()) != EOF && !isBlank(c)) {
        if (token.size() == kMaxTokenLength)
            throw ModelerException(tooLong("Token", kMaxTokenLength, "file '" + name + "'"),
                                   QX_HERE);
        token += (char)stream.get();
    }
    if (token.empty())
        throw ModelerException("End of file.", QX_HERE);
    return token;
}

qxint VFile::readInt() {
    std::string token = readString();
    try {
        return castToQxInt(token);
    } catch (const QXException&) {
        throw ModelerException("Cannot convert the current token to int.", QX_HERE);
    }
}

std::string VFile::readln() {
    checkRead();
    if (stream.peek() == EOF)
        throw ModelerException("End of file: no more line to read from file'" + name + "'.",
                               QX_HERE);
    std::string line;
    int c;
    while ((c = stream.get()) != EOF && c != '\n') {
        if (line.size() == kMaxLineLength)
            throw ModelerException(tooLong("Line", kMaxLineLength, "file '" + name + "'"),
                                   QX_HERE);
        line += (char)c;
    }
    stream.clear(stream.rdstate() & ~std::ios::failbit);
    if (!line.empty() && line.back() == '\r') line.pop_back();  // a CRLF file
    return line;
}

void VFile::write(const std::string& text) {
    checkWrite();
    stream << text;
    if (stream.fail()) failWrite();
}
