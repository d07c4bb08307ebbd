#pragma once

#include <QMetaType>
#include <QString>
#include <vector>

/// One row of the details table: a certificate field or an extension. A plain value.
struct detail_node
{
    /// Published numbers; the table's selector tells rows apart by them.
    enum Kind { BasicField = 0, Extension = 1 };

    QString name;       ///< the field's display name
    QString value;      ///< the short value, for the table
    QString full_value; ///< the complete value, for the text box; mostly equal to `value`
    int kind = BasicField;
};

Q_DECLARE_METATYPE(detail_node)
Q_DECLARE_METATYPE(std::vector<detail_node>)
