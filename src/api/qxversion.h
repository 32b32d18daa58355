#pragma once

#include <string>

// Version information, printed as the banner of every run.
class QXVersion {
public:
    static int getMajorVersionNumber();
    // Kept at 2 although the version text reads 2.0: callers compare numbers.
    static int getMinorVersionNumber();
    static int getBuildDate();
    static int getVersionCode();
    static std::string getVersion();
    static std::string getCopyright();
    // The version text, a newline, then the notice: two lines, no final newline.
    static std::string getInfo();
};
