#include "core/agents/spend/answer_keys.h"

#include <algorithm>
#include <functional>
#include <limits>

namespace tarvik {
namespace {

std::uint64_t hashOf(std::string_view messageId, std::string_view requestId) {
    const std::hash<std::string_view> hash;
    // The two lengths are kept apart, so "ab"+"c" and "a"+"bc" never meet.
    return hash(messageId) * 0x9E3779B97F4A7C15ULL ^ hash(requestId);
}

} // namespace

bool AnswerKeys::insert(std::string_view messageId, std::string_view requestId) {
    constexpr std::size_t kLongest = std::numeric_limits<std::uint32_t>::max();
    if (messageId.size() > kLongest || requestId.size() > kLongest) {
        return true; // not a real id: nothing to tell a repeat by
    }
    if ((count_ + 1) * 2 > slots_.size()) {
        rehash(std::max<std::size_t>(slots_.size() * 2, 1024));
    }
    const std::uint64_t hash = hashOf(messageId, requestId);
    const std::size_t mask = slots_.size() - 1;
    for (std::size_t i = hash & mask;; i = (i + 1) & mask) {
        Slot& slot = slots_[i];
        if (!slot.used) {
            slot = {hash, ids_.size(), static_cast<std::uint32_t>(messageId.size()),
                    static_cast<std::uint32_t>(requestId.size()), true};
            ids_.append(messageId).append(requestId);
            ++count_;
            return true;
        }
        if (slot.hash == hash && slot.idLength == messageId.size() &&
            slot.requestLength == requestId.size() &&
            std::string_view(ids_).substr(slot.offset, slot.idLength) == messageId &&
            std::string_view(ids_).substr(slot.offset + slot.idLength, slot.requestLength) ==
                requestId) {
            return false;
        }
    }
}

void AnswerKeys::reserve(std::size_t answers) {
    std::size_t slots = 1024;
    while (slots < answers * 2) {
        slots *= 2;
    }
    if (slots > slots_.size()) {
        rehash(slots);
    }
}

void AnswerKeys::rehash(std::size_t slots) {
    std::vector<Slot> old(slots);
    old.swap(slots_);
    const std::size_t mask = slots_.size() - 1;
    for (const Slot& slot : old) {
        if (slot.used) {
            std::size_t i = slot.hash & mask;
            while (slots_[i].used) {
                i = (i + 1) & mask;
            }
            slots_[i] = slot;
        }
    }
}

} // namespace tarvik
