// CSV text of the result tables.
#include "ui/CsvExport.h"

#include "common/AtomicFile.h"
#include "common/IndexCast.h"
#include "common/QuarvexError.h"

#include <QStringList>

namespace quarvex::ui {

QString csvField(const QString& text) {
    const bool quoted = text.contains(QLatin1Char(',')) || text.contains(QLatin1Char('"')) ||
                        text.contains(QLatin1Char('\n')) || text.contains(QLatin1Char('\r'));
    if (!quoted) {
        return text;
    }
    return QLatin1Char('"') + QString(text).replace(QStringLiteral("\""), QStringLiteral("\"\"")) +
           QLatin1Char('"');
}

QString csvFromTabs(const QString& tabSeparated) {
    QStringList records;
    for (const QString& line : tabSeparated.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        QStringList fields;
        for (const QString& field : line.split(QLatin1Char('\t'))) {
            fields.append(csvField(field));
        }
        records.append(fields.join(QLatin1Char(',')));
    }
    return records.join(QLatin1Char('\n')) + QLatin1Char('\n');
}

QString rankedResultsCsv(const LIBRARY_GLOBALS& library) {
    QString csv = QStringLiteral("rank,score,mineral,id,laser,chemistry,locality,file\n");
    for (std::size_t row = 0; row < library.MI_SORTINDEXPERCENTS.size(); ++row) {
        const auto e = at(library.MI_SORTINDEXPERCENTS[row]);
        const QStringList fields = {QString::number(row + 1),
                                    QString::number(library.PERC_MATCH[e], 'f', 2),
                                    QString::fromStdString(library.MINAMES[e]).trimmed(),
                                    QString::fromStdString(library.MIGRELT_ID[e]).trimmed(),
                                    QString::fromStdString(library.MI_WAVE[e]).trimmed(),
                                    QString::fromStdString(library.CHEMISTRIES[e]).trimmed(),
                                    QString::fromStdString(library.LOCALITIES[e]).trimmed(),
                                    QString::fromStdString(library.MI_FILENAMES[e]).trimmed()};
        QStringList quoted;
        for (const QString& field : fields) {
            quoted.append(csvField(field));
        }
        csv += quoted.join(QLatin1Char(',')) + QLatin1Char('\n');
    }
    return csv;
}

void saveText(const QString& path, const QString& text, const std::string& title) {
    AtomicFile file(path.toStdString());
    file.stream() << text.toStdString();
    if (!file.isOpen() || !file.commit()) {
        throw QuarvexError("The File Could Not Be Written: " + path.toStdString(), title);
    }
}

} // namespace quarvex::ui
