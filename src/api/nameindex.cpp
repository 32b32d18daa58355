#include "api/nameindex.h"

#include <functional>

uint32_t NameIndex::hashOf(const std::string& name) {
    return static_cast<uint32_t>(std::hash<std::string>()(name));
}

size_t NameIndex::locate(const std::string& name, uint32_t hash) const {
    const size_t mask = slots.size() - 1;
    for (size_t i = hash & mask;; i = (i + 1) & mask) {
        const Slot& slot = slots[i];
        if (slot.kept == FREE || (slot.hash == hash && kept[slot.kept] == name)) return i;
    }
}

QXExpression* NameIndex::find(const std::string& name) const {
    if (count == 0) return nullptr;
    const Slot& slot = slots[locate(name, hashOf(name))];
    return slot.kept == FREE ? nullptr : exprs[slot.kept];
}

uint32_t NameIndex::add(const std::string& name, QXExpression* expr) {
    if (4 * (count + 1) > 3 * slots.size()) grow();
    const uint32_t hash = hashOf(name);
    Slot& slot = slots[locate(name, hash)];
    if (slot.kept != FREE) return TAKEN;
    slot = {hash, static_cast<uint32_t>(kept.size())};
    kept.push_back(name);
    exprs.push_back(expr);
    ++count;
    return slot.kept;
}

// Backward shift: the entries after the freed slot that probed past it move
// back, so that no probe meets a hole before its own entry.
void NameIndex::remove(const std::string& name) {
    if (count == 0) return;
    const size_t mask = slots.size() - 1;
    size_t hole = locate(name, hashOf(name));
    if (slots[hole].kept == FREE) return;
    --count;
    for (size_t i = (hole + 1) & mask; slots[i].kept != FREE; i = (i + 1) & mask) {
        const size_t home = slots[i].hash & mask;
        // Moves back unless its home lies cyclically in (hole, i].
        const bool stays = hole < i ? (home > hole && home <= i) : (home > hole || home <= i);
        if (stays) continue;
        slots[hole] = slots[i];
        hole = i;
    }
    slots[hole] = Slot{0, FREE};
}

void NameIndex::grow() {
    std::vector<Slot> old(slots.empty() ? 16 : 2 * slots.size(), Slot{0, FREE});
    old.swap(slots);
    const size_t mask = slots.size() - 1;
    for (const Slot& slot : old) {
        if (slot.kept == FREE) continue;
        size_t i = slot.hash & mask;
        while (slots[i].kept != FREE) i = (i + 1) & mask;
        slots[i] = slot;
    }
}
