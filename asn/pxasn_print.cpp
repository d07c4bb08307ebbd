#include "asn/node_texts.h"
#include "asn/pxasn.h"
#include "asn/pxasn_walk.h"

#include <cstdio>

QString PXAsnBlock::printData_ex() const
{
    return node_texts::value(node);
}

QString PXAsnBlock::printData() const
{
    return node_texts::braced(node);
}

QString PXAsnBlock::print() const
{
    return node_texts::summary(node);
}

QString PXAsnBlock::myprint() const
{
    QString text;
    for (PXAsnWalk walk{PXAsnElement(this)}; !walk.atEnd(); walk.next()) {
        if (walk.isLeaf())
            text += node_texts::braced(walk.node()) + QLatin1Char('\n');
    }
    return text;
}

void PXAsnBlock::dump(int indent) const
{
    for (PXAsnWalk walk{PXAsnElement(this)}; !walk.atEnd(); walk.next()) {
        const QString margin((indent + walk.depth()) * 4, QLatin1Char(' '));
        const QByteArray line = (margin + node_texts::summary(walk.node())).toUtf8();
        std::fwrite(line.constData(), 1, static_cast<std::size_t>(line.size()), stdout);
    }
}

std::string PXAsnBlock::get_basedata() const
{
    std::string text;
    for (PXAsnWalk walk{PXAsnElement(this)}; !walk.atEnd(); walk.next()) {
        if (walk.isLeaf())
            text += node_texts::braced(walk.node()).toLocal8Bit().toStdString() + ": ";
    }
    return text;
}

int PXAsnElement::get_extendata(std::vector<QString> &values) const
{
    for (PXAsnWalk walk(*this); !walk.atEnd(); walk.next()) {
        if (walk.isLeaf() && walk.node())
            values.push_back(node_texts::value(walk.node()));
    }
    return 1;
}

int PXAsnElement::get_extendata_certpolicy(std::vector<certpolicy> &items, int &level) const
{
    for (PXAsnWalk walk(*this); !walk.atEnd(); walk.next()) {
        if (walk.isLeaf() && walk.node())
            items.push_back({node_texts::value(walk.node()), level + walk.depth()});
    }
    --level;
    return 1;
}

int PXAsnBlock::get_extendata(std::vector<QString> &values) const
{
    return PXAsnElement(this).get_extendata(values);
}

int PXAsnBlock::get_extendata_certpolicy(std::vector<certpolicy> &items, int &level) const
{
    return PXAsnElement(this).get_extendata_certpolicy(items, level);
}
