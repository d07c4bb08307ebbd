#pragma once

#include "cert/c_pxcert.h"
#include "util/c_language.h"
#include "util/text_keys.h"
#include "util/texts.h"

#include <QObject>
#include <QPair>
#include <QVector>

/// What one model said of one certificate.
struct Parsed
{
    std::vector<detail_node> rows;
    QVector<QPair<QString, int>> blocks;
    int rowSignals = 0;

    void listenTo(c_pxcert &model)
    {
        QObject::connect(&model, &c_pxcert::result_normal,
                         [this](const QString &text, int block) { blocks.append({text, block}); });
        QObject::connect(&model, &c_pxcert::result_detail,
                         [this](const std::vector<detail_node> &all) {
                             rows = all;
                             ++rowSignals;
                         });
    }

    /// The first row whose name is the text under `key`; an empty one when there is none.
    detail_node row(const QString &key) const
    {
        for (const detail_node &row : rows) {
            if (row.name == texts::shown(key))
                return row;
        }
        return {};
    }

    bool hasRow(const QString &key) const { return !row(key).name.isEmpty(); }
};

inline Parsed parse(const QByteArray &certificate)
{
    Parsed parsed;
    c_pxcert model(nullptr);
    parsed.listenTo(model);
    model.parse_cert(certificate);
    return parsed;
}
