#include "modeler/value/vfile.h"

#include "api/qxexception.h"
#include "modeler/modelerexception.h"
#include "modeler/value/tfile.h"

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
    stream.open(name, how | std::ios::binary);
    if (!stream.is_open())
        throw ModelerException("File '" + name + "' cannot be opened.", QX_HERE);
}

VFile::~VFile() { close(); }

void VFile::close() {
    if (stream.is_open()) stream.close();
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
    while ((c = stream.peek()) != EOF && !isBlank(c)) token += (char)stream.get();
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
    std::getline(stream, line);
    stream.clear(stream.rdstate() & ~std::ios::failbit);
    if (!line.empty() && line.back() == '\r') line.pop_back();  // a CRLF file
    return line;
}

void VFile::write(const std::string& text) {
    checkWrite();
    stream << text;
}
