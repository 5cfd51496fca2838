#pragma once

#include "core/catalogue/FileCatalogue.h"

#include <QByteArray>
#include <QString>

#include <optional>
#include <vector>

// A ";"-separated wildcard pattern matched against file names as the bytes
// the filesystem gives, without decoding them and without allocating. Gives
// the same answers as catalogue::WildcardFilter: parts made of ASCII
// characters with "*" compare ASCII letters without regard to case; any other
// part ("?", "[...]", letters outside ASCII) goes through WildcardFilter on
// the decoded name.
namespace tarnby::search {

class NameMatcher
{
public:
    explicit NameMatcher(const QString &pattern = QStringLiteral("*.*"));
    bool matches(const char *name, size_t length) const;
    bool matches(const QByteArray &name) const { return matches(name.constData(), size_t(name.size())); }

private:
    bool m_all = false;
    std::vector<QByteArray> m_globs; // upper-case ASCII, "*" the only wildcard
    std::optional<catalogue::WildcardFilter> m_other;
};

} // namespace tarnby::search
