#include "api/qxversion.h"

int QXVersion::getMajorVersionNumber() { return 2; }
int QXVersion::getMinorVersionNumber() { return 2; }
int QXVersion::getBuildDate() { return 20120322; }
int QXVersion::getVersionCode() { return 20; }

std::string QXVersion::getVersion() {
    return "Quarrix " + std::to_string(getMajorVersionNumber()) + "." + std::to_string(0) +
           " (build " + std::to_string(getBuildDate()) + ")";
}

std::string QXVersion::getCopyright() {
    return "Copyright (C) the Quarrix developers. Local search for 0-1 optimization models.";
}

std::string QXVersion::getInfo() { return getVersion() + "\n" + getCopyright(); }
