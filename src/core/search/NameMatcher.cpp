#include "core/search/NameMatcher.h"

#include <QFile>

namespace tarnby::search {

namespace {

inline char upper(char c)
{
    return c >= 'a' && c <= 'z' ? char(c - 'a' + 'A') : c;
}

// A glob with "*" as its only wildcard against name, ASCII letters without
// case. The classic backtracking to the last star: linear for one star,
// at worst length x length for many.
bool globMatches(const QByteArray &glob, const char *name, size_t length)
{
    const char *g = glob.constData();
    const size_t glen = size_t(glob.size());
    size_t gi = 0, ni = 0;
    size_t star = size_t(-1), mark = 0;
    while (ni < length) {
        if (gi < glen && g[gi] == '*') {
            star = gi++;
            mark = ni;
        } else if (gi < glen && g[gi] == upper(name[ni])) {
            ++gi;
            ++ni;
        } else if (star != size_t(-1)) {
            gi = star + 1;
            ni = ++mark;
        } else {
            return false;
        }
    }
    while (gi < glen && g[gi] == '*')
        ++gi;
    return gi == glen;
}

} // namespace

NameMatcher::NameMatcher(const QString &pattern)
{
    QStringList others;
    for (const QString &part : catalogue::splitPattern(pattern)) {
        if (part == QLatin1String("*.*") || part == QLatin1String("*")) {
            m_all = true;
            continue;
        }
        bool plain = true;
        for (const QChar c : part) {
            if (c.unicode() >= 0x80 || c == QLatin1Char('?') || c == QLatin1Char('[') || c == QLatin1Char(']')
                || c == QLatin1Char('\\') || c.unicode() < 0x20) {
                plain = false;
                break;
            }
        }
        if (plain)
            m_globs.push_back(part.toLatin1().toUpper());
        else
            others.append(part);
    }
    if (!others.isEmpty())
        m_other.emplace(others.join(QLatin1Char(';')));
}

bool NameMatcher::matches(const char *name, size_t length) const
{
    if (m_all)
        return true;
    for (const QByteArray &glob : m_globs) {
        if (globMatches(glob, name, length))
            return true;
    }
    return m_other && m_other->matches(QFile::decodeName(QByteArray::fromRawData(name, qsizetype(length))));
}

} // namespace tarnby::search
