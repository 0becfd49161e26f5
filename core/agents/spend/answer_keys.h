#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tarvik {

// The answers seen so far, each by its message id and request id as written. A month of logs
// holds a few hundred thousand: the ids are kept together in one growing block and looked up in
// an open table, rather than as a heap string each.
class AnswerKeys {
public:
    // Whether this answer is new (and from now on known).
    bool insert(std::string_view messageId, std::string_view requestId);
    std::size_t size() const { return count_; }
    void reserve(std::size_t answers);

private:
    struct Slot {
        std::uint64_t hash = 0;
        std::size_t offset = 0; // of the message id in ids_, then the request id
        std::uint32_t idLength = 0;
        std::uint32_t requestLength = 0;
        bool used = false;
    };
    void rehash(std::size_t slots); // a power of two

    std::string ids_;
    std::vector<Slot> slots_;
    std::size_t count_ = 0;
};

} // namespace tarvik
