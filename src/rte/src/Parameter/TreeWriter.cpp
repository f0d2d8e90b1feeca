#include "TreeText.h"
#include "TextCodec.h"

#include <RTE/Exception.h>
#include <RTE/Parameter/Factory.h>

#include <ostream>

namespace RTE {
namespace Parameter {
namespace Private {

namespace {

class Writer {
public:
    explicit Writer(std::ostream& out) : m_out(out) {}

    void Node(const C_Node& node, size_t depth)
    {
        m_line.assign(depth * 2, ' ');
        m_line += NodeKindName(node.GetKind());
        m_line += ' ';
        AppendQuoted(m_line, node.GetName());
        Attribute("title", node.GetTitle());
        Attribute("description", node.GetDescription());
        m_line += " access=" + std::to_string(static_cast<int>(node.GetAccessMode()));
        Attribute("editor", QString::fromUtf8(node.GetEditor()));

        switch (node.GetKind()) {
        case E_NodeKind::Text:
            Attribute("value", static_cast<const C_Text&>(node).GetValue());
            Flush();
            return;
        case E_NodeKind::Integer: {
            const auto& integer = static_cast<const C_Integer&>(node);
            m_line += " min=" + std::to_string(integer.GetRange().GetMin());
            m_line += " max=" + std::to_string(integer.GetRange().GetMax());
            m_line += " value=" + std::to_string(integer.GetValue());
            Flush();
            return;
        }
        case E_NodeKind::Double: {
            const auto& number = static_cast<const C_Double&>(node);
            m_line += " min=" + FormatDouble(number.GetRange().GetMin());
            m_line += " max=" + FormatDouble(number.GetRange().GetMax());
            m_line += " value=" + FormatDouble(number.GetValue());
            Flush();
            return;
        }
        case E_NodeKind::Enumeration: {
            const auto& enumeration = static_cast<const C_Enumeration&>(node);
            m_line += " selected=" + std::to_string(enumeration.GetSelectedIndex()) + " {";
            Flush();
            for (unsigned i = 0; i < enumeration.GetEntryCount(); ++i) {
                const auto entry = enumeration.GetEntry(i);
                m_line.assign((depth + 1) * 2, ' ');
                m_line += "entry ";
                AppendQuoted(m_line, entry->GetName());
                Attribute("title", entry->GetTitle());
                Attribute("description", entry->GetDescription());
                m_line += " value=" + std::to_string(entry->GetValue());
                Flush();
            }
            break;
        }
        case E_NodeKind::List: {
            const auto& list = static_cast<const C_List&>(node);
            m_line += " {";
            Flush();
            for (unsigned i = 0; i < list.GetSize(); ++i)
                Node(*list.GetAt(i), depth + 1);
            break;
        }
        case E_NodeKind::Category: {
            const auto& category = static_cast<const C_Category&>(node);
            m_line += " {";
            Flush();
            for (unsigned i = 0; i < category.GetChildCount(); ++i)
                Node(*category.GetChildAt(i), depth + 1);
            break;
        }
        }
        m_line.assign(depth * 2, ' ');
        m_line += '}';
        Flush();
    }

    void Line(const std::string& text)
    {
        m_line = text;
        Flush();
    }

private:
    void Attribute(const char* key, const QString& value)
    {
        m_line += ' ';
        m_line += key;
        m_line += '=';
        AppendQuoted(m_line, value);
    }

    void Flush()
    {
        m_line += '\n';
        m_out.write(m_line.data(), static_cast<std::streamsize>(m_line.size()));
    }

    std::ostream& m_out;
    std::string m_line;
};

} // namespace

void WriteTreeText(std::ostream& out, const C_Category& root)
{
    Writer writer(out);
    writer.Line(std::string(kTreeMagic) + " " + std::to_string(kTreeVersion));
    for (unsigned i = 0; i < root.GetChildCount(); ++i)
        writer.Node(*root.GetChildAt(i), 0);
    writer.Line("end");
    out.flush();
    if (!out)
        RTE_THROW_MSG(Exception, "Writing the parameter tree failed");
}

} // namespace Private
} // namespace Parameter
} // namespace RTE
