#include "solver/kernel/bipartition.h"

#include "solver/kernel/quickrand.h"

#include <sstream>

void Bipartition::init(unsigned int n) {
    elements.assign(n, 0);
    positions.assign(n, 0);
    for (unsigned int i = 0; i < n; ++i) elements[i] = positions[i] = i;
    nbIn = 0;
    total = n;
}

unsigned int Bipartition::getRandomIn(Quickrand& rand) const {
    if (nbIn == 0) return NONE;
    return elements[rand.nextInt(nbIn)];
}

unsigned int Bipartition::getRandomOut(Quickrand& rand) const {
    if (nbIn == total) return NONE;
    return elements[nbIn + rand.nextInt(total - nbIn)];
}

std::string Bipartition::toString() const {
    std::ostringstream out;
    out << "In:";
    for (unsigned int i = 0; i < nbIn; ++i) out << ' ' << elements[i];
    out << " | Out:";
    for (unsigned int i = nbIn; i < total; ++i) out << ' ' << elements[i];
    return out.str();
}
