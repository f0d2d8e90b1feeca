#include <RTE/Parameter/Tree.h>

#include "TreeText.h"

#include <RTE/AtomicFileWrite.h>
#include <RTE/Exception.h>

#include <QFile>

#include <boost/make_shared.hpp>

#include <sstream>

namespace RTE {
namespace Parameter {

C_Tree::C_Tree() : m_root(boost::make_shared<C_Category>(QString(), QString(), QString()))
{
    m_root->m_tree = this;
}

C_Tree::C_Tree(const C_Tree& other) : m_root(boost::static_pointer_cast<C_Category>(other.m_root->Clone()))
{
    m_root->m_tree = this;
}

C_Tree& C_Tree::operator=(const C_Tree& other)
{
    if (this != &other)
        Adopt(boost::static_pointer_cast<C_Category>(other.m_root->Clone()));
    return *this;
}

C_Tree::~C_Tree() { m_root->m_tree = nullptr; }

void C_Tree::Adopt(const boost::shared_ptr<C_Category>& root)
{
    m_root->m_tree = nullptr;
    m_root = root;
    m_root->m_tree = this;
}

void C_Tree::Add(const boost::shared_ptr<C_Node>& node) { m_root->Add(node); }

boost::shared_ptr<C_Node> C_Tree::Find(const QString& nameOrPath) const
{
    if (boost::shared_ptr<C_Node> node = m_root->Find(nameOrPath))
        return node;
    return m_root->FindPath(nameOrPath);
}

void C_Tree::Write(std::ostream& out) const { Private::WriteTreeText(out, *m_root); }

void C_Tree::Read(std::istream& in, const QString& sourceName)
{
    Private::ParsedTree parsed = Private::ReadTreeText(in, sourceName);
    Private::AdoptListFactories(parsed, *m_root, sourceName);
    Adopt(parsed.root);
}

boost::shared_ptr<C_Tree> C_Tree::ReadNew(std::istream& in, const QString& sourceName)
{
    auto tree = boost::make_shared<C_Tree>();
    tree->Read(in, sourceName);
    return tree;
}

void C_Tree::WriteFile(const QString& path) const
{
    std::ostringstream text;
    Write(text);
    // Whole or not at all: a failed write leaves the earlier file as it was.
    try {
        WriteFileAtomically(path.toStdString(), text.str());
    } catch (const FileError& e) {
        RTE_THROW(FileWriteError, QStringLiteral("Cannot write parameter tree file '%1': %2").arg(path, e.message()));
    }
}

void C_Tree::ReadFile(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        RTE_THROW_MSG(FileError, "Cannot open parameter tree file '" << path << "': " << file.errorString());
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError)
        RTE_THROW_MSG(FileError, "Cannot read parameter tree file '" << path << "': " << file.errorString());
    std::istringstream in(std::string(bytes.constData(), static_cast<size_t>(bytes.size())));
    Read(in, path);
}

} // namespace Parameter
} // namespace RTE
