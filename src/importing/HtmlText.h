#pragma once

#include <QString>

// Descriptions from learning-management systems often arrive as HTML. The notes field holds plain
// text, so tags become line breaks or nothing, links keep their address, and entities are decoded.
namespace HtmlText {

// True when the text carries markup worth reducing (a tag or an entity); plain text is left as is.
bool looksLikeHtml(const QString &text);
QString toPlainText(const QString &html);

} // namespace HtmlText
