#include "request/StreetTypes.h"

#include <QTest>

using namespace corvalent;
using namespace Qt::StringLiterals;

class TestStreetTypes : public QObject {
    Q_OBJECT

private slots:
    void normalise_data()
    {
        QTest::addColumn<QString>("street");
        QTest::addColumn<QString>("expected");
        QTest::newRow("English full word") << u"Main Street"_s << u"Main ST"_s;
        QTest::newRow("French word before the name") << u"rue Principale"_s << u"RUE Principale"_s;
        QTest::newRow("any letter case") << u"ELM AVENUE"_s << u"ELM AVE"_s;
        QTest::newRow("common abbreviation") << u"Sunset Blvd"_s << u"Sunset BLVD"_s;
        QTest::newRow("accented French type") << u"Montée Saint-Michel"_s << u"MTÉE Saint-Michel"_s;
        QTest::newRow("accented name untouched") << u"Boulevard René-Lévesque"_s << u"BLVD René-Lévesque"_s;
        QTest::newRow("period dropped") << u"Elm St."_s << u"Elm ST"_s;
        QTest::newRow("comma kept") << u"Elm Street, Apt 4"_s << u"Elm ST, Apt 4"_s;
        QTest::newRow("only whole words") << u"Streetsville Road"_s << u"Streetsville RD"_s;
        QTest::newRow("street names that look like types stay") << u"Park Avenue"_s << u"Park AVE"_s;
        QTest::newRow("no type") << u"Broadway"_s << u"Broadway"_s;
        QTest::newRow("blanks kept as they are") << u"Main  Street "_s << u"Main  ST "_s;
        QTest::newRow("empty") << QString() << QString();
    }
    void normalise()
    {
        QFETCH(QString, street);
        QFETCH(QString, expected);
        QCOMPARE(NormaliseStreetType(street), expected);
    }
};

QTEST_GUILESS_MAIN(TestStreetTypes)
#include "tst_streettypes.moc"
