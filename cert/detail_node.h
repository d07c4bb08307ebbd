#pragma once

#include <QMetaType>
#include <QString>
#include <vector>

/// One row of the details table: a certificate field or an extension.
struct detail_node
{
    QString name;       ///< the field's display name
    QString value;      ///< the short value, for the table
    QString full_value; ///< the complete value, for the text box; mostly equal to `value`
    int kind = 0;       ///< 0 a basic certificate field, 1 an extension
};

Q_DECLARE_METATYPE(detail_node)
Q_DECLARE_METATYPE(std::vector<detail_node>)
