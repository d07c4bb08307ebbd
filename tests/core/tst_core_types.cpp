#include "core/q_dispatch.h"
#include "typed_target.h"

#include <functional>
#include <QTest>

namespace {

struct TypeCase
{
    const char *declared;
    const char *method;
    std::function<bool(Q_Dispatch &, TypedTarget &, const QString &)> passes;
};

template <typename Type>
TypeCase typeCase(const char *declared, const char *method, const Type &value)
{
    return {declared, method, [value](Q_Dispatch &agent, TypedTarget &target, const QString &name) {
                Type argument = value;
                agent.invokeHelper(name, nullptr, &argument);
                const Type *received = std::any_cast<Type>(&target.received);
                return received && *received == value;
            }};
}

// Every type that a method may ask for by value, in the order of the list.
const std::vector<TypeCase> &typeCases()
{
    static int object = 0;
    static const std::vector<TypeCase> cases = {
        typeCase<char>("char", "takeChar", 'x'),
        typeCase<short>("short", "takeShort", -12345),
        typeCase<int>("int", "takeInt", -1234567890),
        typeCase<long>("long", "takeLong", -1234567890123456789L),
        typeCase<unsigned char>("unsigned char", "takeUnsignedChar", 200),
        typeCase<unsigned short>("unsigned short", "takeUnsignedShort", 54321),
        typeCase<unsigned int>("unsigned int", "takeUnsignedInt", 4000000000U),
        typeCase<unsigned long>("unsigned long", "takeUnsignedLong", 12345678901234567890UL),
        typeCase<uchar>("uchar", "takeUchar", 200),
        typeCase<ushort>("ushort", "takeUshort", 54321),
        typeCase<uint>("uint", "takeUint", 4000000000U),
        typeCase<ulong>("ulong", "takeUlong", 12345678901234567890UL),
        typeCase<float>("float", "takeFloat", 1.5F),
        typeCase<double>("double", "takeDouble", -2.25),
        typeCase<bool>("bool", "takeBool", true),
        typeCase<qint8>("qint8", "takeQint8", -100),
        typeCase<qint16>("qint16", "takeQint16", -12345),
        typeCase<qint32>("qint32", "takeQint32", -1234567890),
        typeCase<qint64>("qint64", "takeQint64", -1234567890123456789LL),
        typeCase<qlonglong>("qlonglong", "takeQlonglong", -1234567890123456789LL),
        typeCase<quint8>("quint8", "takeQuint8", 200),
        typeCase<quint16>("quint16", "takeQuint16", 54321),
        typeCase<quint32>("quint32", "takeQuint32", 4000000000U),
        typeCase<quint64>("quint64", "takeQuint64", 12345678901234567890ULL),
        typeCase<qulonglong>("qulonglong", "takeQulonglong", 12345678901234567890ULL),
        typeCase<Qt::HANDLE>("Qt::HANDLE", "takeHandle", &object),
        typeCase<QString>("QString", "takeQString", QString::fromUtf8("證書")),
        typeCase<QString>("const QString &", "takeQStringReference", QStringLiteral("text")),
        typeCase<QStringList>("QStringList", "takeQStringList", {QStringLiteral("a"), QString()}),
        typeCase<QByteArray>("QByteArray", "takeQByteArray", QByteArray("a\0b", 3)),
        typeCase<QBitArray>("QBitArray", "takeQBitArray", QBitArray(9, true)),
        typeCase<QLatin1String>("QLatin1String", "takeQLatin1String", QLatin1String("latin")),
        typeCase<QChar>("QChar", "takeQChar", QChar(0x8B49)),
        typeCase<QDate>("QDate", "takeQDate", QDate(2024, 2, 29)),
        typeCase<QTime>("QTime", "takeQTime", QTime(23, 59, 58)),
        typeCase<QDateTime>("QDateTime", "takeQDateTime",
                            QDateTime(QDate(2024, 2, 29), QTime(23, 59, 58), Qt::UTC)),
        typeCase<QSize>("QSize", "takeQSize", QSize(436, 697)),
        typeCase<QSizeF>("QSizeF", "takeQSizeF", QSizeF(1.5, 2.5)),
        typeCase<QPoint>("QPoint", "takeQPoint", QPoint(742, 191)),
        typeCase<QPointF>("QPointF", "takeQPointF", QPointF(1.5, 2.5)),
        typeCase<QLine>("QLine", "takeQLine", QLine(1, 2, 3, 4)),
        typeCase<QLineF>("QLineF", "takeQLineF", QLineF(1.5, 2, 3, 4)),
        typeCase<QRect>("QRect", "takeQRect", QRect(1, 2, 3, 4)),
        typeCase<QRectF>("QRectF", "takeQRectF", QRectF(1.5, 2, 3, 4)),
        typeCase<QUrl>("QUrl", "takeQUrl", QUrl(QStringLiteral("https://example.com/crl"))),
        typeCase<QLocale>("QLocale", "takeQLocale", QLocale(QLocale::German)),
        typeCase<QEasingCurve>("QEasingCurve", "takeQEasingCurve",
                               QEasingCurve(QEasingCurve::OutBounce)),
        typeCase<Qt::GlobalColor>("Qt::GlobalColor", "takeGlobalColor", Qt::darkCyan),
        typeCase<QVariant>("QVariant", "takeQVariant", QVariant(42)),
        typeCase<const char *>("const char *", "takeText", "text"),
    };
    return cases;
}

} // namespace

class TestCoreTypes : public QObject
{
    Q_OBJECT

private slots:
    void methodTakesType_data();
    void methodTakesType();
    void methodTakesPointer();
    void methodTakesArray();
    void acceptedNames_data();
    void acceptedNames();
};

void TestCoreTypes::methodTakesType_data()
{
    QTest::addColumn<int>("index");
    for (size_t i = 0; i < typeCases().size(); ++i)
        QTest::newRow(typeCases().at(i).declared) << static_cast<int>(i);
}

void TestCoreTypes::methodTakesType()
{
    QFETCH(int, index);
    const TypeCase &type = typeCases().at(static_cast<size_t>(index));
    TypedTarget target;
    Q_Dispatch agent(&target);
    QVERIFY(type.passes(agent, target, QLatin1String(type.method)));
}

void TestCoreTypes::methodTakesPointer()
{
    TypedTarget target;
    Q_Dispatch agent(&target);
    QObject *argument = this;
    agent.invokeHelper(QStringLiteral("takePointer"), nullptr, &argument);
    QCOMPARE(std::any_cast<QObject *>(target.received), this);
}

void TestCoreTypes::methodTakesArray()
{
    TypedTarget target;
    Q_Dispatch agent(&target);
    int argument[3] = {1, 2, 3};
    agent.invokeHelper(QStringLiteral("takeArray"), nullptr, &argument);
    QCOMPARE(std::any_cast<int>(target.received), 3);
}

void TestCoreTypes::acceptedNames_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<bool>("accepted");
    const QList<QByteArray> accepted = {
        "char",
        "short",
        "int",
        "long",
        "unsigned char",
        "unsigned short",
        "unsigned int",
        "unsigned long",
        "uchar",
        "ushort",
        "uint",
        "ulong",
        "float",
        "double",
        "bool",
        "qint8",
        "qint16",
        "qint32",
        "qint64",
        "qlonglong",
        "quint8",
        "quint16",
        "quint32",
        "quint64",
        "qulonglong",
        "Qt::HANDLE",
        "QString",
        "QStringList",
        "QByteArray",
        "QBitArray",
        "QLatin1String",
        "QChar",
        "QDate",
        "QTime",
        "QDateTime",
        "QSize",
        "QSizeF",
        "QPoint",
        "QPointF",
        "QLine",
        "QLineF",
        "QRect",
        "QRectF",
        "QUrl",
        "QLocale",
        "QRegExp",
        "QEasingCurve",
        "Qt::GlobalColor",
        "QVariant",
        // pointers and arrays of anything
        "QObject*",
        "const char*",
        "Unlisted*",
        "*",
        "int[3]",
        "Unlisted[]",
        "]",
    };
    const QList<QByteArray> refused = {
        "",
        "void",
        "Char",
        "INT",
        "qstring",
        "QString&",
        "QString ",
        " QString",
        "QStrin",
        "QString2",
        "QObject",
        "QObjectList",
        "Unlisted",
        "QList<int>",
        "Int*8",
        "unsigned",
        "long long",
        "long double",
        "QVariantMap",
        "QColor",
        "Qt::Key",
        "QRegularExpression",
    };
    for (const QByteArray &name : accepted)
        QTest::newRow(name.constData()) << name << true;
    for (const QByteArray &name : refused)
        QTest::newRow(QByteArray("not \"" + name + '"').constData()) << name << false;
}

void TestCoreTypes::acceptedNames()
{
    QFETCH(QByteArray, name);
    QFETCH(bool, accepted);
    QCOMPARE(Q_Dispatch::acceptsParameterType(name), accepted);
}

QTEST_GUILESS_MAIN(TestCoreTypes)
#include "tst_core_types.moc"
