#pragma once
// Walks the buffers of one set. The iterator does not own the set, which must outlive it.
//
// Iteration starts at buffer index 1 whatever index is passed, and so never visits buffer 0; this
// is a fixed property of the class that callers rely on. The end iterator is (null set, index 0);
// an iterator over an empty set, or over no set, is the end iterator from the start.

#include <SetApi/Export.h>

#include <BufferApi/I_Buffer.h>

#include <memory>

namespace SetApi {

class I_Set;

class SETAPI_API C_SetIterator {
public:
    // The end iterator.
    C_SetIterator();
    C_SetIterator(I_Set* set, int index);

    bool operator==(const C_SetIterator& other) const;
    bool operator!=(const C_SetIterator& other) const;

    // The buffer at the current index, loaded afresh on each call; null on the end iterator.
    std::unique_ptr<BufferApi::I_Buffer> operator*() const;
    std::unique_ptr<BufferApi::I_Buffer> operator->() const;
    std::unique_ptr<BufferApi::I_Buffer> operator()() const;

    // Steps to the next index, becoming the end iterator once the index reaches the set's size.
    // All three forms return a copy taken after the step (the postfix form too). The end iterator
    // stays the end iterator.
    C_SetIterator operator++();
    C_SetIterator operator++(int);
    C_SetIterator Next();

private:
    std::unique_ptr<BufferApi::I_Buffer> Load() const;

    I_Set* m_set = nullptr;
    int m_index = 0;
};

} // namespace SetApi
