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
/// 1 for success and 0 for failure, after which everything is as it was, where nothing else is
/// said. Failed navigation prints a fixed text to standard output.
///
/// An object does not own its node: the document (`PXAsn`), or who handed the node to `load`, does.
/// A child object is made when it is first asked for, and belongs to this one, whose `QObject`
/// child it is. What ends child objects:
/// - the destructor, and `close`: all below;
/// - `setData` and `setDataEx` on an OCTET STRING: all below;
/// - `remove` and `release`: the one at the index, with all below it.
/// What is handed out lives until one of these, on this object or one above it. Where a node ends
/// by them that other objects of the document stand for, too, those stand for no node any more.
///
/// Trees and objects may be of any depth, as editing can make them: nothing here recurs along them.
///
/// GUI thread only.
class PXAsnBlock : public QObject
{
    Q_OBJECT

public:
    explicit PXAsnBlock(QObject *parent);
    ~PXAsnBlock() override;

    /// Stands for `block` from now on, with one child object for each of its children, in order,
    /// behind those that it had. `block` stays its owner's, and must outlive this object's use of
    /// it. 0 for null. Linear in the number of children; where other objects may stand for the same
    /// nodes (a loaded object, one below another), in all below the document.
    int load(stASN_BLOCK_HEADER *block);

    int type() const; ///< the identifier octet; 0 without node
    bool checkTag(int tag) const;
    int getChildCount() const;
    /// The child object at `index`, from 0, owned here; null when there is none, or when
    /// `checkType` is not `ASN_TAG_ANY` and the child has another tag. Constant time.
    PXAsnBlock *getChild(int index, int checkType) const;
    /// Ends the child object at `index`, with all below it, to be made anew when it is asked for:
    /// who walks a million children needs no more than one of them at a time. Nothing happens where
    /// there is none, and after the first change of the document by `remove`, `addBlock` or `load`.
    void release(int index) const;

    /// The content octets as they are encoded (`node_values::content`). A copy.
    QByteArray contentOctets() const;

    // Values. Empty, or 0, without node and for a constructed one.

    operator QString() const;    ///< `node_values::text`
    operator QByteArray() const; ///< `node_values::octets`
    operator int() const;        ///< `node_values::number`
    /// Local date and time of a UTCTime (X.680, 47) or GeneralizedTime (46), invalid for anything
    /// else. The two digits of a UTCTime are the whole year, and its hour moves from UTC into local
    /// time, on the same day, when it has the form YYMMDDhhmmssZ. A field that is missing or no
    /// number counts as 0. An impossible date makes it invalid, an impossible time of day midnight.
    operator QDateTime() const;
    QString toString() const;
    QByteArray toByteArray() const;
    int toInt() const;
    QDateTime toDateTime() const;
    /// "YYMMDDhhmmssZ" (below 60 is 20YY) or "YYYYMMDDhhmmssZ", eight hours later, in UTC; invalid
    /// for any other text. Fields that are no number, or impossible, count as above.
    static QDateTime convertDateTime(const QByteArray &text);

    // Texts for people. Linear in the octets below.

    QString printData() const;    ///< `node_texts::braced`
    QString printData_ex() const; ///< `node_texts::value`: what extensions show
    QString print() const;        ///< `node_texts::summary`
    QString myprint() const;      ///< one line for each leaf below
    void dump(int indent) const;  ///< the tree's `print` texts, to standard output
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
    /// them. What is deeper than `ASN_MAX_DEPTH`, or comes behind `ASN_MAX_ELEMENTS`, is not read
    /// back by `open`.
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
    /// not for the new element. 0 when it does not parse, when this node is a leaf, and, after it
    /// was parsed and its lengths computed, without node. Linear in `der` and in what is below the
    /// document.
    int addBlock(const QByteArray &der);
    /// Ends the child at `index`, object and node. 0 when there is none of either. Linear in the
    /// number of children; after `addBlock` or `load` in what is below the document.
    int remove(int index);

protected:
    void deleteChildren();
    /// To be called before `top`, or all below it, ends: every object of the document that stands
    /// for such a node stands for none from now on.
    void forgetNodes(const stASN_BLOCK_HEADER *top, bool isTopIncluded);

    stASN_BLOCK_HEADER *node = nullptr;
    /// A place for each child, in order; null until its object is asked for.
    mutable QList<PXAsnBlock *> listChild;
    /// Of a document, or of who has none: several objects may stand for one node. All objects are
    /// made then, as places can't follow what is changed through another object.
    bool sharesNodes = false;

private:
    friend class PXAsnElement;
    friend class PXAsnChildren;

    static std::vector<stASN_BLOCK_HEADER *> childrenOf(const stASN_BLOCK_HEADER *block);
    void addPlaces(std::vector<stASN_BLOCK_HEADER *> nodes);
    stASN_BLOCK_HEADER *nodeAtPlace(int index) const;
    PXAsnBlock *childAt(int index) const;
    void makeChildren();
    PXAsnBlock *document();
    void shareNodes();
    int storeData(const QByteArray &data, bool padInteger, const char *operation,
                  const int (&lines)[4]);

    /// The nodes of the first places in `listChild`; empty when all objects are made.
    std::vector<stASN_BLOCK_HEADER *> m_nodesAtPlaces;
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
    /// into `data` afterwards. Throws `std::bad_alloc`, as the toolkit's containers do, rather than
    /// to hold a part of a tree. Clears the extension switch (`g_bExtend`). Linear in `data`.
    int open(const QByteArray &data);
    /// Makes this a document of an empty SEQUENCE. Deliberate: the tag only has to be a constructed
    /// one.
    int create(int tag);
    /// Frees the tree and all child objects. Nothing happens without them.
    void close();
};
