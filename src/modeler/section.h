#pragma once

#include <string>

// The sections a program may define, as bits: built-in functions carry a
// mask of the sections in which they may run (255: any).
enum class Section : int { input = 1, model = 2, param = 4, display = 8, output = 16 };

// "input", "model", "param", "display" or "output".
const std::string& getSectionName(Section section);
