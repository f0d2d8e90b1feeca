#include "SetWriterFunction.h"

#include <SetApi/set/I_Set.h>

#include <BufferApi/I_Buffer.h>

#include <RTE/Exception.h>

#include <utility>

namespace SetApi {
namespace Private {

C_SetWriterFunction::C_SetWriterFunction(std::shared_ptr<I_Set> set,
                                         std::shared_ptr<const BufferApi::I_Buffer> buffer, unsigned index)
    : m_set(std::move(set)), m_buffer(std::move(buffer)), m_index(index)
{
}

void C_SetWriterFunction::operator()()
{
    RTE_VERIFY(m_set && m_buffer, "A queue place without work was run");
    m_set->StoreBuffer(m_buffer.get(), m_index);
    m_buffer.reset();
}

C_SetWriterExceptionHandler::C_SetWriterExceptionHandler(Function function) : m_function(std::move(function)) {}

void C_SetWriterExceptionHandler::OnException(const QString& text)
{
    if (m_function)
        m_function(text.toStdString());
}

} // namespace Private
} // namespace SetApi
