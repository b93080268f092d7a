// The help commands' pages: the Markdown documentation shipped with the program, rendered to
// HTML for the help window.
#pragma once

#include <filesystem>

namespace quarvex::ui {

/// Title of the message when help cannot be shown.
inline constexpr const char* kHelpErrorTitle = "Quarvex Help";

/// The documentation: "docs" beside the executable (build tree, portable copy), else the
/// installed one, share/quarvex/docs.
std::filesystem::path shippedDocsFolder();

/// Renders every Markdown document of `docsFolder` to an HTML page in `outputFolder` (links
/// between documents follow) and returns the page of a help command: the desktop program's guide
/// (Contents), an index of the topics of all documents (Search for Help On...) or the page on
/// using help (How to Use Help). Throws QuarvexError when a document is missing or a page
/// cannot be written.
std::filesystem::path prepareHelpPage(int command, const std::filesystem::path& docsFolder,
                                      const std::filesystem::path& outputFolder);

} // namespace quarvex::ui
