#include "tests/support/message_recorder.h"
#include "tests/util/utf8_text.h"
#include "util/c_language.h"
#include "util/debug_line.h"
#include "util/text_keys.h"
#include "util/texts.h"

#include <QTest>
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
#include <QTextCodec>
#endif

// The ways to a text, with the language file and the English configuration that are shipped.
class TestUtilTexts : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void publishedNumbers_data();
    void publishedNumbers();
    void rawTextOrKey();
    void throughTheLocale();
    void inALocaleThatHoldsLittle();
    void identifiers_data();
    void identifiers();
    void debugLines_data();
    void debugLines();
};

void TestUtilTexts::initTestCase()
{
    c_language::GetLangPtr()->LANG_SetFileName(QString());
}

void TestUtilTexts::publishedNumbers_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<int>("number");
    const auto add = [](QLatin1String key, int number) {
        QTest::addRow("%d", number) << QString(key) << number;
    };
    add(text_keys::kColumnField, 1);
    add(text_keys::kColumnValue, 2);
    add(text_keys::kStatusPurposes, 3);
    add(text_keys::kStatusProvesIdentity, 4);
    add(text_keys::kStatusSecuresCommunication, 5);
    add(text_keys::kStatusValid, 6);
    add(text_keys::kIdentityIssuedTo, 7);
    add(text_keys::kIdentityIssuedBy, 8);
    add(text_keys::kIdentityValidFrom, 9);
    add(text_keys::kIdentityValidTo, 10);
    add(text_keys::kShowAll, 11);
    add(text_keys::kShowBasicFields, 12);
    add(text_keys::kShowExtensions, 13);
    add(text_keys::kVersion, 14);
    add(text_keys::kSerialNumber, 15);
    add(text_keys::kSignatureAlgorithm, 16);
    add(text_keys::kIssuer, 17);
    add(text_keys::kValidFrom, 18);
    add(text_keys::kValidTo, 19);
    add(text_keys::kSubject, 20);
    add(text_keys::kPublicKey, 21);
    add(text_keys::kPublicKeyParameters, 22);
    add(text_keys::kCrlDistributionPoints, 24);
    add(text_keys::kCertificatePolicies, 25);
    add(text_keys::kAuthorityInformationAccess, 26);
    add(text_keys::kAuthorityKeyIdentifier, 27);
    add(text_keys::kSubjectAlternativeName, 28);
    add(text_keys::kBasicConstraints, 30);
    add(text_keys::kKeyUsage, 31);
    add(text_keys::kNetscapeCertificateType, 32);
    add(text_keys::kWindowTitle, 39);
    add(text_keys::kClose, 41);
    add(text_keys::kTabGeneral, 66);
    add(text_keys::kTabDetails, 67);
    add(text_keys::kLabelCertificate, 68);
    add(text_keys::kLabelShow, 69);
    add(text_keys::kStatusNotValid, 75);
}

// A suite brings a language file of its own, made for these numbers. What only this program has to
// say has keys of another form.
void TestUtilTexts::publishedNumbers()
{
    QFETCH(QString, key);
    QFETCH(int, number);
    QCOMPARE(key, QStringLiteral("PXCERTREAD_%1").arg(number, 4, 10, QLatin1Char('0')));
}

void TestUtilTexts::rawTextOrKey()
{
    QCOMPARE(texts::raw(text_keys::kValidFrom), text("Valid from"));
    QCOMPARE(texts::raw(text("PXOID_2_5_29_37")), text("Extended Key Usage"));
    QCOMPARE(texts::raw(text("no such key 證書")), text("no such key 證書"));
    QCOMPARE(texts::raw(QLatin1String("no such key")), text("no such key"));
    const QByteArray longKey(1000, 'k');
    QCOMPARE(texts::raw(QLatin1String(longKey)), QString::fromLatin1(longKey));
}

void TestUtilTexts::throughTheLocale()
{
    // This locale holds everything.
    for (const char *shown : {"", "plain", "證書", "\xF0\x9F\x94\x92"})
        QCOMPARE(texts::throughLocal8Bit(text(shown)), text(shown));
    const QString withNul = QString::fromUtf8("a\0b", 3);
    QCOMPARE(texts::throughLocal8Bit(withNul), withNul);
    QCOMPARE(texts::throughLocal8Bit(withNul).constData(), withNul.constData()); // it is the same
    QCOMPARE(texts::shown(text_keys::kColumnField), text("Field"));
    QCOMPARE(texts::shown(text("no such key")), text("no such key"));
}

void TestUtilTexts::inALocaleThatHoldsLittle()
{
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    QTextCodec *before = QTextCodec::codecForLocale();
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("Big5"));
    const QString held = texts::throughLocal8Bit(text("a證書b"));
    const QString lost = texts::throughLocal8Bit(text("a证b"));
    const QString shown = texts::shown(text("a证b"));
    const QString raw = texts::raw(text("a证b"));
    QTextCodec::setCodecForLocale(before);
    QCOMPARE(held, text("a證書b"));
    QCOMPARE(lost, text("a?b"));
    QCOMPARE(shown, text("a?b"));
    QCOMPARE(raw, text("a证b"));
#else
    QCOMPARE(texts::throughLocal8Bit(text("a证b")), text("a证b")); // none holds little any more
#endif
}

void TestUtilTexts::identifiers_data()
{
    QTest::addColumn<QString>("dotted");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("translated");
    QTest::newRow("by a text's key")
        << text("2.5.29.15") << QString(text_keys::kKeyUsage) << text("Key Usage");
    QTest::newRow("by a key of its own")
        << text("2.5.29.37") << text("PXOID_2_5_29_37") << text("Extended Key Usage");
    QTest::newRow("the same in all languages") << text("2.5.4.3") << text("CN") << text("CN");
    QTest::newRow("unknown") << text("1.2.3.4.5") << text("1.2.3.4.5") << text("1.2.3.4.5");
    QTest::newRow("nothing") << QString() << QString() << QString();
}

void TestUtilTexts::identifiers()
{
    QFETCH(QString, dotted);
    QTEST(texts::nameOfIdentifier(dotted), "name");
    QTEST(texts::nameOfIdentifier(QLatin1String(dotted.toLatin1())), "name");
    QTEST(texts::raw(texts::nameOfIdentifier(dotted)), "translated");
}

void TestUtilTexts::debugLines_data()
{
    QTest::addColumn<QString>("said");
    for (const char *said : {"", "plain ~", "\"quoted\"", "back\\slash", "line\nfeed", "tab\t",
                             "證書", "é", "\x7F", "\xE2\x80\xAE turned", "\xF0\x9F\x94\x92"})
        QTest::newRow(said) << text(said);
    QTest::newRow("NUL") << QString::fromLatin1("a\0b", 3);
}

void TestUtilTexts::debugLines()
{
    QFETCH(QString, said);
    const MessageRecorder recorder;
    debugLine(said, " count", -3);
    debugLine(said);
    qDebug() << said << " count" << -3;
    qDebug() << said;
    const QStringList lines = MessageRecorder::messages();
    QCOMPARE(lines.mid(0, 2), lines.mid(2));
}

QTEST_GUILESS_MAIN(TestUtilTexts)
#include "tst_util_texts.moc"
