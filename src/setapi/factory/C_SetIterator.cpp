#include <SetApi/factory/C_SetIterator.h>

#include <SetApi/set/I_Set.h>

namespace SetApi {

C_SetIterator::C_SetIterator() = default;

C_SetIterator::C_SetIterator(I_Set* set, int /*index*/)
{
    // The index argument has no effect: iteration always begins at buffer 1.
    if (set != nullptr && set->GetSize() != 0) {
        m_set = set;
        m_index = 1;
    }
}

bool C_SetIterator::operator==(const C_SetIterator& other) const
{
    return m_set == other.m_set && m_index == other.m_index;
}

bool C_SetIterator::operator!=(const C_SetIterator& other) const { return !(*this == other); }

std::unique_ptr<BufferApi::I_Buffer> C_SetIterator::operator*() const { return Load(); }
std::unique_ptr<BufferApi::I_Buffer> C_SetIterator::operator->() const { return Load(); }
std::unique_ptr<BufferApi::I_Buffer> C_SetIterator::operator()() const { return Load(); }

std::unique_ptr<BufferApi::I_Buffer> C_SetIterator::Load() const
{
    if (m_set == nullptr)
        return nullptr;
    return m_set->LoadBuffer(static_cast<unsigned>(m_index));
}

C_SetIterator C_SetIterator::Next()
{
    if (m_set == nullptr)
        return *this;
    ++m_index;
    // Compared as signed numbers: a size beyond the range of int ends the walk at once.
    if (m_index >= static_cast<int>(m_set->GetSize())) {
        m_set = nullptr;
        m_index = 0;
    }
    return *this;
}

C_SetIterator C_SetIterator::operator++() { return Next(); }
C_SetIterator C_SetIterator::operator++(int) { return Next(); }

} // namespace SetApi
