#pragma once

#include "asn/asn_block.h"
#include "asn/certpolicy.h"

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QObject>
#include <QString>
#include <string>
#include <vector>

/// One element of a parsed tree, as an object: navigation, values, texts and editing. Results are
/// 1 for success and 0 for failure. Failed navigation prints a fixed text to standard output.
///
/// It does not own its node. Child objects are owned by this one and live as long as it does.
/// GUI thread only.
class PXAsnBlock : public QObject
{
    Q_OBJECT

public:
    explicit PXAsnBlock(QObject *parent);
    ~PXAsnBlock() override;

    /// Stands for `block` from now on, with one child object for each of its children. 0 for null.
    int load(stASN_BLOCK_HEADER *block);

    int type() const; ///< the identifier octet; 0 without node
    bool checkTag(int tag) const;
    int getChildCount() const;
    /// The child object at `index`, owned here; null when there is none, or when `checkType` is not
    /// 0 and the child has another tag.
    PXAsnBlock *getChild(int index, int checkType) const;

    /// The content octets as they are encoded, the unused-bits octet of a BIT STRING included;
    /// empty without node, for a node that holds children, and above 512 MiB.
    QByteArray contentOctets() const;

    // Values. Empty, or 0, without node and for a constructed one.

    /// OBJECT IDENTIFIER: its name in the language file's OID section, or dotted text. BIT STRING:
    /// the octets after the unused-bits octet. UTF8String and BMPString: their text. Others: the
    /// content as Latin-1.
    operator QString() const;
    /// BIT STRING: the octets after the unused-bits octet. BMPString: its text in UTF-8. Others:
    /// the content.
    operator QByteArray() const;
    /// INTEGER of one octet, unsigned. Deliberate: two and four octets are read as the platform
    /// stores them, others as 0.
    operator int() const;
    /// Local date and time of a time value, invalid for anything else and when a field is out of
    /// range. A field that is missing or no number counts as 0.
    operator QDateTime() const;
    QString toString() const;
    QByteArray toByteArray() const;
    int toInt() const;
    QDateTime toDateTime() const;
    /// "YYMMDDhhmmssZ" (below 60 is 20YY) or "YYYYMMDDhhmmssZ", eight hours later, in UTC; unset
    /// for any other text and when a field is out of range. One that is no number counts as 0.
    static QDateTime convertDateTime(const QByteArray &text);

    // Texts for people.

    QString printData() const;    ///< " { value }"
    QString printData_ex() const; ///< the value alone, as extensions show it
    QString print() const;        ///< the type's name, and the length of the value's text
    QString myprint() const;      ///< one line for each leaf below
    void dump(int indent) const;  ///< the tree's `print` texts, to standard output
    std::string get_basedata() const;

    /// Appends the value text of every leaf below, depth first. Always 1.
    int get_extendata(std::vector<QString> &values) const;
    /// The same with each leaf's depth below this block, counted on from `level`, which is one less
    /// afterwards. Always 1.
    int get_extendata_certpolicy(std::vector<certpolicy> &items, int &level) const;

    // Editing. Afterwards `update` on the document makes lengths right for `build`.

    int update();
    /// The DER of the subtree, by the lengths that `update` left; empty where a leaf has outgrown
    /// them.
    QByteArray build();
    /// Replaces the content. INTEGER: an octet 0 is put before a first octet above 0x80.
    /// OBJECT IDENTIFIER: `data` is dotted text. BIT STRING: an octet 0 is put before.
    /// OCTET STRING: a leaf from now on; the children that it held go, objects and nodes.
    int setData(const QByteArray &data);
    /// The same, an INTEGER as given.
    int setDataEx(const QByteArray &data);
    /// A new child at the end, owned here; null when this is no constructed node.
    PXAsnBlock *addSample(int tag);
    PXAsnBlock *addStruct(int tag);
    /// Appends the first element of `der`. Deliberate: the new child object stands for this node,
    /// not for the new element.
    int addBlock(const QByteArray &der);
    /// Deletes the child at `index`, object and node. 0 when there is none. What other objects
    /// stood for the same node, as those that `addBlock` makes do, may not be used any more.
    int remove(int index);

protected:
    void deleteChildren();

    stASN_BLOCK_HEADER *node = nullptr;
    QList<PXAsnBlock *> listChild;

private:
    int storeData(const QByteArray &data, bool padInteger, const char *operation,
                  const int (&lines)[4]);
};

/// A document: the root of a tree that it owns.
class PXAsn : public PXAsnBlock
{
    Q_OBJECT

public:
    explicit PXAsn(QObject *parent);
    ~PXAsn() override;

    /// Parses DER, or base64 text of it. 1 on success.
    int open(const QByteArray &data);
    /// A new document of an empty SEQUENCE. Deliberate: the tag only has to be a constructed one.
    int create(int tag);
    /// Frees the tree and all child objects.
    void close();
};
