// Markdown documentation to HTML help pages, with an index of topics.
#include "ui/HelpPages.h"

#include "common/AtomicFile.h"
#include "common/QuarvexError.h"
#include "common/WorkingFolders.h"
#include "ui/Commands.h"

#include <QFile>
#include <QRegularExpression>
#include <QTextDocument>
#include <QUrl>

#include <algorithm>
#include <vector>

namespace quarvex::ui {

namespace {

constexpr const char* kHelpUnavailable = "Help Is Not Available: The Documentation Could Not Be "
                                         "Opened";

QString readText(const std::filesystem::path& path) {
    QFile file(QString::fromStdString(path.string()));
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        throw QuarvexError(kHelpUnavailable, kHelpErrorTitle);
    }
    return QString::fromUtf8(file.readAll());
}

void writeText(const std::filesystem::path& path, const QString& text) {
    AtomicFile file(path);
    file.stream() << text.toStdString();
    if (!file.isOpen() || !file.commit()) {
        throw QuarvexError(kHelpUnavailable, kHelpErrorTitle);
    }
}

QString pageName(const std::filesystem::path& markdown) {
    return QString::fromStdString(markdown.stem().string()) + QStringLiteral(".html");
}

// Markdown to HTML: links to other documents lead to their pages, images stay in the docs.
QString toHtml(const QString& markdown, const std::filesystem::path& docsFolder) {
    QTextDocument document;
    document.setMarkdown(markdown);
    QString html = document.toHtml();
    html.replace(QRegularExpression(QStringLiteral(R"(href="(?:docs/)?([^":]+)\.md)")),
                 QStringLiteral(R"(href="\1.html)"));
    const QString base =
        QUrl::fromLocalFile(QString::fromStdString(docsFolder.string()) + QLatin1Char('/'))
            .toString();
    html.replace(QRegularExpression(QStringLiteral(R"(src="(?![a-z]+:))")),
                 QStringLiteral("src=\"") + base);
    return html;
}

// One list item per heading of every document, linking to the document's page.
QString topicIndex(const std::vector<std::filesystem::path>& documents) {
    QString markdown = QStringLiteral("# Quarvex Help: Index of Topics\n\n");
    for (const auto& document : documents) {
        const QString page = pageName(document);
        for (const QString& line : readText(document).split(QLatin1Char('\n'))) {
            if (line.startsWith(QLatin1Char('#'))) {
                const QString topic = line.section(QLatin1Char(' '), 1).trimmed();
                markdown += QStringLiteral("- [%1](%2)\n").arg(topic, page);
            }
        }
    }
    QTextDocument index;
    index.setMarkdown(markdown);
    return index.toHtml();
}

} // namespace

std::filesystem::path shippedDocsFolder() {
    const std::filesystem::path beside = executableFolder() / "docs";
    const std::filesystem::path installed =
        executableFolder().parent_path() / "share" / "quarvex" / "docs";
    std::error_code error;
    const bool onlyInstalled = !std::filesystem::is_directory(beside, error) &&
                               std::filesystem::is_directory(installed, error);
    return onlyInstalled ? installed : beside;
}

std::filesystem::path prepareHelpPage(int command, const std::filesystem::path& docsFolder,
                                      const std::filesystem::path& outputFolder) {
    std::error_code error;
    std::vector<std::filesystem::path> documents;
    for (const auto& entry : std::filesystem::directory_iterator(docsFolder, error)) {
        if (entry.path().extension() == ".md") {
            documents.push_back(entry.path());
        }
    }
    if (error || documents.empty()) {
        throw QuarvexError(kHelpUnavailable, kHelpErrorTitle);
    }
    std::sort(documents.begin(), documents.end());
    std::filesystem::create_directories(outputFolder, error);
    for (const auto& document : documents) {
        writeText(outputFolder / pageName(document).toStdString(),
                  toHtml(readText(document), docsFolder));
    }
    const std::filesystem::path index = outputFolder / "index.html";
    writeText(index, topicIndex(documents));

    const std::filesystem::path page = command == kCmdHelpSearch   ? index
                                       : command == kCmdHelpOnHelp ? outputFolder / "help.html"
                                                                   : outputFolder / "desktop.html";
    if (!std::filesystem::is_regular_file(page, error)) {
        throw QuarvexError(kHelpUnavailable, kHelpErrorTitle);
    }
    return page;
}

} // namespace quarvex::ui
