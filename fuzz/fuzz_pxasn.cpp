#include "asn/pxasn.h"
#include "fuzz_target.h"

#include <QCoreApplication>

namespace {

void readAll(PXAsnBlock &block)
{
    // What lost its node hands out no children.
    for (int i = 0; block.type() != 0 && i < block.getChildCount(); ++i)
        readAll(*block.getChild(i, 0));
    const bool isConstructed = (block.type() & 0x20) != 0;
    require(!isConstructed || block.toString().isEmpty());
    require(!isConstructed || block.toByteArray().isEmpty());
    require(block.printData().startsWith(QLatin1String(" { ")));
    block.printData_ex();
    block.print();
    block.toInt();
    block.toDateTime();
    PXAsnBlock::convertDateTime(block.toByteArray());
}

// One change, of the block that the octet's upper bits lead to.
void change(PXAsn &document, std::uint8_t octet, const QByteArray &der)
{
    PXAsnBlock *block = &document;
    for (int depth = octet >> 6; depth > 0 && block->type() != 0 && block->getChildCount() > 0;
         --depth)
        block = block->getChild(octet % block->getChildCount(), 0);
    switch (octet % 5) {
    case 0:
        block->addBlock(der);
        break;
    case 1:
        block->remove(octet >> 5);
        break;
    case 2:
        block->setData(der.left(octet));
        break;
    case 3:
        block->addSample(octet);
        break;
    default:
        block->addStruct(octet);
    }
}

void requireFlattens(PXAsn &document)
{
    std::vector<QString> values;
    std::vector<certpolicy> items;
    int level = 0;
    require(document.get_extendata(values) == 1);
    require(document.get_extendata_certpolicy(items, level) == 1);
    require(level == -1 && items.size() == values.size());
}

// The document, encoded.
QByteArray requireComesBack(PXAsn &document)
{
    const QByteArray der = document.build();
    PXAsn again(nullptr);
    require(again.open(der) == 1 && again.build() == der);
    return der;
}

} // namespace

// Every value of every element can be read, whatever is changed, and flattening lowers the level by
// one.
int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static int argc = 1;
    static char name[] = "fuzz_pxasn";
    static char *argv[] = {name, nullptr};
    static const QCoreApplication application(argc, argv);
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});

    PXAsn document(nullptr);
    if (!document.open({reinterpret_cast<const char *>(data), static_cast<int>(size)}))
        return 0;
    readAll(document);
    requireFlattens(document);
    const QByteArray der = requireComesBack(document);
    constexpr std::size_t kChanges = 8;
    for (std::size_t i = 0; i < size && i < kChanges; ++i)
        change(document, data[size - 1 - i], der);
    readAll(document);
    document.myprint();
    document.update();
    document.build();
    return 0;
}
