#include "modeler/section.h"

#include <array>

const std::string& getSectionName(Section section) {
    static const std::array<std::string, 5> names = {"input", "model", "param", "display",
                                                     "output"};
    unsigned bits = (unsigned)section;
    size_t index = 0;
    while (bits > 1 && index + 1 < names.size()) {
        bits >>= 1;
        ++index;
    }
    return names[index];
}
