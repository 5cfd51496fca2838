#pragma once

#include <QString>
#include <QStringList>

// The sample corpus the tests read in place (TARNBY_FIXTURES, default
// ../shared/fixtures beside the project). Tests skip when it is absent.
namespace fixtures {

QString root();           // empty when the corpus is absent
QString path(const QString &relative); // root() + "/" + relative
QStringList files(const QString &folder, const QStringList &nameFilters = {}); // full paths, sorted

} // namespace fixtures

#define REQUIRE_FIXTURES()                                                                         \
    do {                                                                                           \
        if (fixtures::root().isEmpty())                                                            \
            QSKIP("the sample corpus is not present (set TARNBY_FIXTURES)");                       \
    } while (false)
