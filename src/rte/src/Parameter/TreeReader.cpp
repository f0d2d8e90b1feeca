#include "EditorNames.h"
#include "TextCodec.h"
#include "TreeText.h"

#include <RTE/Exception.h>
#include <RTE/Parameter/Factory.h>

#include <boost/make_shared.hpp>

#include <cmath>
#include <istream>
#include <limits>
#include <map>
#include <vector>

namespace RTE {
namespace Parameter {
namespace Private {

namespace {

struct AttributeValue {
    bool quoted = false;
    QString text;      // quoted values
    std::string token; // bare values
};

struct OpenBlock {
    boost::shared_ptr<C_Node> node;
    bool hasSelected = false;
    long long selected = -1;
    unsigned line = 0;
};

class Reader {
public:
    Reader(std::istream& in, const QString& sourceName) : m_in(in), m_source(sourceName) {}

    ParsedTree Read()
    {
        ParsedTree result;
        result.root = boost::make_shared<C_Category>(QString(), QString(), QString());
        m_stack.push_back({result.root, false, -1, 0});
        m_result = &result;

        if (!NextLine())
            Fail("empty input, expected '" + Header() + "'");
        CheckHeader();

        while (NextLine()) {
            size_t pos = SkipSpaces(0);
            if (pos == m_line.size())
                continue;
            const std::string rest = TrimRight(m_line.substr(pos));
            if (rest == "}") {
                CloseBlock();
            } else if (rest == "end") {
                if (m_stack.size() != 1)
                    Fail("'end' inside an open block (opened at line " + std::to_string(m_stack.back().line) + ")");
                while (NextLine())
                    if (SkipSpaces(0) != m_line.size())
                        Fail("content after 'end'");
                return result;
            } else {
                NodeLine(pos);
            }
        }
        Fail("unexpected end of input, the text is cut short (no 'end' line)");
    }

private:
    [[noreturn]] void Fail(const std::string& what) const
    {
        RTE_THROW_MSG(Exception, m_source << ":" << m_lineNumber << ": " << what);
    }

    static std::string Header() { return std::string(kTreeMagic) + " " + std::to_string(kTreeVersion); }

    static std::string TrimRight(std::string text)
    {
        while (!text.empty() && (text.back() == ' ' || text.back() == '\t'))
            text.pop_back();
        return text;
    }

    size_t SkipSpaces(size_t pos) const
    {
        while (pos < m_line.size() && (m_line[pos] == ' ' || m_line[pos] == '\t'))
            ++pos;
        return pos;
    }

    // Reads one line without its line end (and without a CR before it). Refuses lines longer than
    // kMaxLineLength before storing them. False at the end of the input.
    bool NextLine()
    {
        m_line.clear();
        std::streambuf* buffer = m_in.rdbuf();
        if (!buffer || !m_in.good())
            return false;
        bool any = false;
        for (;;) {
            const auto c = buffer->sbumpc();
            if (c == std::char_traits<char>::eof()) {
                m_in.setstate(std::ios::eofbit);
                break;
            }
            any = true;
            if (c == '\n')
                break;
            if (m_line.size() >= kMaxLineLength) {
                ++m_lineNumber;
                Fail("line longer than " + std::to_string(kMaxLineLength) + " bytes");
            }
            m_line += static_cast<char>(c);
        }
        if (!any)
            return false;
        ++m_lineNumber;
        if (!m_line.empty() && m_line.back() == '\r')
            m_line.pop_back();
        return true;
    }

    void CheckHeader()
    {
        const std::string magic = std::string(kTreeMagic) + " ";
        if (m_line == Header())
            return;
        if (m_line.compare(0, magic.size(), magic) == 0) {
            long long version = 0;
            if (ParseInteger(m_line.substr(magic.size()), version))
                Fail("unsupported format version " + std::to_string(version) + ", this program reads version " +
                     std::to_string(kTreeVersion));
        }
        Fail("not a parameter tree, expected the first line '" + Header() + "'");
    }

    std::string Word(size_t& pos) const
    {
        const size_t start = pos;
        while (pos < m_line.size() && m_line[pos] >= 'a' && m_line[pos] <= 'z')
            ++pos;
        return m_line.substr(start, pos - start);
    }

    QString Quoted(size_t& pos) const
    {
        QString text;
        std::string error;
        if (!ReadQuoted(m_line, pos, text, error))
            Fail(error + " at column " + std::to_string(pos + 1));
        return text;
    }

    void NodeLine(size_t pos)
    {
        const std::string kind = Word(pos);
        if (kind.empty() || pos >= m_line.size() || m_line[pos] != ' ')
            Fail("expected a node kind and a quoted name");
        pos = SkipSpaces(pos);
        const QString name = Quoted(pos);

        std::map<std::string, AttributeValue> attributes;
        bool opensBlock = false;
        for (;;) {
            const size_t before = pos;
            pos = SkipSpaces(pos);
            if (pos == m_line.size())
                break;
            if (pos == before)
                Fail("expected a blank before column " + std::to_string(pos + 1));
            if (m_line[pos] == '{' && SkipSpaces(pos + 1) == m_line.size()) {
                opensBlock = true;
                break;
            }
            const std::string key = Word(pos);
            if (key.empty() || pos >= m_line.size() || m_line[pos] != '=')
                Fail("expected key=value at column " + std::to_string(pos + 1));
            ++pos;
            AttributeValue value;
            if (pos < m_line.size() && m_line[pos] == '"') {
                value.quoted = true;
                value.text = Quoted(pos);
            } else {
                const size_t start = pos;
                while (pos < m_line.size() && m_line[pos] != ' ' && m_line[pos] != '\t' && m_line[pos] != '"')
                    ++pos;
                value.token = m_line.substr(start, pos - start);
                if (value.token.empty())
                    Fail("missing value of '" + key + "'");
            }
            if (!attributes.emplace(key, std::move(value)).second)
                Fail("attribute '" + key + "' given twice");
        }

        if (kind == "entry")
            return EntryLine(name, attributes, opensBlock);
        MakeNode(kind, name, attributes, opensBlock);
    }

    // Removes and returns the attribute; checks that it is quoted or bare as required.
    bool Take(std::map<std::string, AttributeValue>& attributes, const std::string& key, bool quoted,
              AttributeValue& value) const
    {
        const auto it = attributes.find(key);
        if (it == attributes.end())
            return false;
        if (it->second.quoted != quoted)
            Fail("attribute '" + key + "' must be " + (quoted ? "a quoted string" : "a number"));
        value = std::move(it->second);
        attributes.erase(it);
        return true;
    }

    QString TakeText(std::map<std::string, AttributeValue>& attributes, const std::string& key) const
    {
        AttributeValue value;
        return Take(attributes, key, true, value) ? value.text : QString();
    }

    bool TakeInteger(std::map<std::string, AttributeValue>& attributes, const std::string& key,
                     long long& number) const
    {
        AttributeValue value;
        if (!Take(attributes, key, false, value))
            return false;
        if (!ParseInteger(value.token, number))
            Fail("attribute '" + key + "' is not an integer: '" + Shorten(value.token) + "'");
        return true;
    }

    bool TakeDouble(std::map<std::string, AttributeValue>& attributes, const std::string& key, double& number) const
    {
        AttributeValue value;
        if (!Take(attributes, key, false, value))
            return false;
        if (!ParseDouble(value.token, number))
            Fail("attribute '" + key + "' is not a number: '" + Shorten(value.token) + "'");
        return true;
    }

    static std::string Shorten(const std::string& token)
    {
        std::string shown = token.size() > 40 ? token.substr(0, 40) + "..." : token;
        for (char& c : shown)
            if (static_cast<unsigned char>(c) < 0x20 || static_cast<unsigned char>(c) >= 0x7F)
                c = '?';
        return shown;
    }

    void CheckNoneLeft(const std::map<std::string, AttributeValue>& attributes, const std::string& kind) const
    {
        if (!attributes.empty())
            Fail("unknown attribute '" + Shorten(attributes.begin()->first) + "' for " + kind);
    }

    void MakeNode(const std::string& kind, const QString& name, std::map<std::string, AttributeValue>& attributes,
                  bool opensBlock)
    {
        const QString title = TakeText(attributes, "title");
        const QString description = TakeText(attributes, "description");
        long long access = AccessReadWrite;
        if (TakeInteger(attributes, "access", access) && !IsValidAccessMode(static_cast<int>(access)))
            Fail("access mode " + std::to_string(access) + " is not 0, 1 or 2");
        AttributeValue editorValue;
        const bool hasEditor = Take(attributes, "editor", true, editorValue);
        const E_AccessMode mode = static_cast<E_AccessMode>(access);

        boost::shared_ptr<C_Node> node;
        bool isBlock = false;
        OpenBlock block;
        if (kind == "category") {
            node = boost::make_shared<C_Category>(name, title, description, mode);
            isBlock = true;
        } else if (kind == "text") {
            AttributeValue value;
            if (!Take(attributes, "value", true, value))
                Fail("text '" + Shorten(name.toStdString()) + "' has no value");
            node = boost::make_shared<C_Text>(name, title, description, mode, value.text);
        } else if (kind == "integer") {
            C_RangeT<long long> range = C_Integer::DefaultRange();
            long long min = range.GetMin(), max = range.GetMax(), value = 0;
            TakeInteger(attributes, "min", min);
            TakeInteger(attributes, "max", max);
            if (!TakeInteger(attributes, "value", value))
                Fail("integer '" + Shorten(name.toStdString()) + "' has no value");
            range = C_RangeT<long long>(min, max);
            if (range.IsEmpty())
                Fail("empty range [" + std::to_string(min) + ", " + std::to_string(max) + "]");
            if (!range.Contains(value))
                Fail("value " + std::to_string(value) + " is outside the range [" + std::to_string(min) + ", " +
                     std::to_string(max) + "]");
            node = boost::make_shared<C_Integer>(name, title, description, mode, value, range);
        } else if (kind == "double") {
            const C_RangeT<double> standard = C_Double::DefaultRange();
            double min = standard.GetMin(), max = standard.GetMax(), value = 0;
            TakeDouble(attributes, "min", min);
            TakeDouble(attributes, "max", max);
            if (!TakeDouble(attributes, "value", value))
                Fail("double '" + Shorten(name.toStdString()) + "' has no value");
            if (std::isnan(min) || std::isnan(max) || max < min)
                Fail("invalid range [" + FormatDouble(min) + ", " + FormatDouble(max) + "]");
            if (!std::isnan(value) && (value < min || max < value))
                Fail("value " + FormatDouble(value) + " is outside the range [" + FormatDouble(min) + ", " +
                     FormatDouble(max) + "]");
            node = boost::make_shared<C_Double>(name, title, description, mode, value, C_RangeT<double>(min, max));
        } else if (kind == "enumeration") {
            node = boost::make_shared<C_Enumeration>(name, title, description, mode);
            block.hasSelected = TakeInteger(attributes, "selected", block.selected);
            isBlock = true;
        } else if (kind == "list") {
            node = boost::make_shared<C_List>(name, title, description, mode, C_List::ElementFactory());
            isBlock = true;
        } else {
            Fail("unknown node kind '" + Shorten(kind) + "'");
        }
        CheckNoneLeft(attributes, kind);
        if (isBlock != opensBlock)
            Fail(kind + (isBlock ? " must open a block with '{'" : " cannot open a block"));
        if (hasEditor) {
            const char* editor = InternEditor(editorValue.text, node->GetEditor());
            if (!editor)
                Fail("unusable editor name '" + Shorten(editorValue.text.toStdString()) + "'");
            node->SetEditor(editor);
        }

        AddToParent(node);
        m_result->lineOf[node.get()] = m_lineNumber;
        if (isBlock) {
            if (m_stack.size() > kMaxDepth)
                Fail("nesting deeper than " + std::to_string(kMaxDepth) + " levels");
            block.node = node;
            block.line = m_lineNumber;
            m_stack.push_back(block);
        }
    }

    void AddToParent(const boost::shared_ptr<C_Node>& node)
    {
        C_Node& parent = *m_stack.back().node;
        switch (parent.GetKind()) {
        case E_NodeKind::Category: {
            auto& category = static_cast<C_Category&>(parent);
            if (node->GetName().isEmpty())
                Fail("a node in a category needs a name");
            if (category.Find(node->GetName()))
                Fail("the name '" + Shorten(node->GetName().toStdString()) + "' is used twice in one category");
            category.Add(node);
            return;
        }
        case E_NodeKind::List:
            static_cast<C_List&>(parent).Append(node);
            return;
        default:
            Fail("an enumeration holds entries only");
        }
    }

    void EntryLine(const QString& name, std::map<std::string, AttributeValue>& attributes, bool opensBlock)
    {
        if (m_stack.back().node->GetKind() != E_NodeKind::Enumeration)
            Fail("an entry outside an enumeration");
        auto& enumeration = static_cast<C_Enumeration&>(*m_stack.back().node);
        const QString title = TakeText(attributes, "title");
        const QString description = TakeText(attributes, "description");
        long long value = 0;
        if (!TakeInteger(attributes, "value", value))
            Fail("entry '" + Shorten(name.toStdString()) + "' has no value");
        if (value < std::numeric_limits<int>::min() || value > std::numeric_limits<int>::max())
            Fail("entry value " + std::to_string(value) + " is not a 32-bit int");
        CheckNoneLeft(attributes, "entry");
        if (opensBlock)
            Fail("entry cannot open a block");
        if (enumeration.FindEntry(name))
            Fail("the entry name '" + Shorten(name.toStdString()) + "' is used twice");
        enumeration.AddEntry(boost::make_shared<C_EnumerationEntry>(name, title, description, static_cast<int>(value)));
    }

    void CloseBlock()
    {
        if (m_stack.size() == 1)
            Fail("'}' without an open block");
        const OpenBlock block = m_stack.back();
        m_stack.pop_back();
        if (block.node->GetKind() != E_NodeKind::Enumeration)
            return;
        auto& enumeration = static_cast<C_Enumeration&>(*block.node);
        if (!block.hasSelected)
            return; // the first entry, if any, is selected
        if (block.selected < -1 || block.selected >= static_cast<long long>(enumeration.GetEntryCount()))
            Fail("selected entry " + std::to_string(block.selected) + " of the enumeration opened at line " +
                 std::to_string(block.line) + " does not exist");
        enumeration.SetSelectedIndex(static_cast<int>(block.selected));
    }

    std::istream& m_in;
    QString m_source;
    std::string m_line;
    unsigned m_lineNumber = 0;
    std::vector<OpenBlock> m_stack;
    ParsedTree* m_result = nullptr;
};

} // namespace

ParsedTree ReadTreeText(std::istream& in, const QString& sourceName)
{
    return Reader(in, sourceName).Read();
}

} // namespace Private
} // namespace Parameter
} // namespace RTE
