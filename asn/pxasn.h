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

/// The largest content that is read as a value or a text. Beyond it, the sizes of texts made from
/// it would no longer fit into an int.
constexpr unsigned int kMostValueOctets = 512U * 1024 * 1024;

/// One element of a parsed tree, as an object: navigation, values, texts and editing. Results are
/// 1 for success and 0 for failure, after which everything is as it was, where nothing else is
/// said. Failed navigation prints a fixed text to standard output.
///
/// An object does not own its node: the document (`PXAsn`), or who handed the node to `load`, does.
/// Child objects are owned by this one, and each is also its `QObject` child. What ends them:
/// - the destructor, and `close`: all below;
/// - `setData` and `setDataEx` on an OCTET STRING: all below;
/// - `remove`: the one at the index, with all below it.
/// What is handed out lives until one of these, on this object or one above it.
///
/// GUI thread only.
class PXAsnBlock : public QObject
{
    Q_OBJECT

public:
    explicit PXAsnBlock(QObject *parent);
    ~PXAsnBlock() override;

    /// Stands for `block` from now on, with one child object for each of its children, in order;
    /// child objects that it had end. `block` stays its owner's and must outlive this object's use
    /// of it. 0 for null. Linear in the subtree.
    int load(stASN_BLOCK_HEADER *block);

    int type() const; ///< the identifier octet; 0 without node
    bool checkTag(int tag) const;
    int getChildCount() const;
    /// The child object at `index`, from 0, owned here; null when there is none, or when
    /// `checkType` is not `ASN_TAG_ANY` and the child has another tag. Constant time.
    PXAsnBlock *getChild(int index, int checkType) const;

    /// The content octets as they are encoded, the unused-bits octet of a BIT STRING included;
    /// empty without node, for a node that holds children, and above `kMostValueOctets`. A copy.
    QByteArray contentOctets() const;

    // Values. Empty, or 0, without node and for a constructed one.

    /// OBJECT IDENTIFIER (X.690, 8.19): its name in the language file's OID section, or dotted
    /// text, or nothing when it has none. BIT STRING (8.6): the octets after the unused-bits octet,
    /// as Latin-1. UTF8String and BMPString (8.23): their text. Others: the content as Latin-1.
    operator QString() const;
    /// BIT STRING: the octets after the unused-bits octet. BMPString: its text in UTF-8. Others:
    /// the content.
    operator QByteArray() const;
    /// INTEGER (X.690, 8.3) of one octet, unsigned. Deliberate: two and four octets are read as the
    /// platform stores them, others as 0.
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

    // Texts for people. Linear in the octets below.

    QString printData() const; ///< " { value }"
    /// The value alone, as extensions show it, in the forms of `leaf_text`; a UTCTime up to its
    /// first NUL and with a blank behind it.
    QString printData_ex() const;
    QString print() const;       ///< the type's name, and the length of the value's text
    QString myprint() const;     ///< one line for each leaf below
    void dump(int indent) const; ///< the tree's `print` texts, to standard output
    /// The `printData` of every leaf below, depth first, in the local 8-bit encoding, each with
    /// ": " behind it.
    std::string get_basedata() const;

    /// Appends the value text of every leaf below, depth first. Always 1.
    int get_extendata(std::vector<QString> &values) const;
    /// The same with each leaf's depth below this block, counted on from `level`, which is one less
    /// afterwards. Always 1.
    int get_extendata_certpolicy(std::vector<certpolicy> &items, int &level) const;

    // Editing. Afterwards `update` on the document makes lengths right for `build`.

    /// Computes the lengths of the subtree. 0 without node.
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
    /// A new child at the end, node and object, an empty leaf; the object is owned here. Null when
    /// this is no constructed node. For a constructed tag the new object has no node.
    PXAsnBlock *addSample(int tag);
    /// The same for a node that can have children. Null for a tag that is not constructed.
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

/// A document: the root of a tree that it owns. `close`, the destructor, and the next `open` or
/// `create` that succeeds end the tree and all child objects.
class PXAsn : public PXAsnBlock
{
    Q_OBJECT

public:
    explicit PXAsn(QObject *parent);
    ~PXAsn() override;

    /// Parses DER, or base64 text of it: its first element, with all that is below. Nothing points
    /// into `data` afterwards. Clears the extension switch (`g_bExtend`). Linear in `data`.
    int open(const QByteArray &data);
    /// Makes this a document of an empty SEQUENCE. Deliberate: the tag only has to be a constructed
    /// one.
    int create(int tag);
    /// Frees the tree and all child objects. Nothing happens without them.
    void close();
};
