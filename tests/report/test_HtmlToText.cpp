#include "report/HtmlToText.h"
#include "support/TempConfig.h"

#include <gtest/gtest.h>

TEST(HtmlToTextTest, ThePlainTextAlternativeReadsAsThePageDoes)
{
  const std::pair<QString, QString> cases[] = {
      // Tags dropped, blanks collapsed, blocks on their own lines.
      {"<h2>Unassigned</h2>\r\n<p>These   tickets\n are <b>not</b> yet assigned.</p><div>next</div>",
       "Unassigned\n\nThese tickets are not yet assigned.\n\nnext"},
      {"    <p><b>Organization(s)</b><br>\n    Acme, Globex</p>", "Organization(s)\nAcme, Globex"},
      {"a<br><br>b<hr>c", "a\n\nb\n----------\nc"},
      // Head, scripts, styles and comments give no text.
      {"<!DOCTYPE html><html><head><title>T</title><style>p { color: red }</style></head>"
       "<body><!-- hidden\n comment --><SCRIPT>alert('x<p>')</SCRIPT><p>shown</p></body></html>",
       "shown"},
      // Entities and character references decoded.
      {"<p>&gt; 10 exchanges &amp; &lt;b&gt; &quot;x&quot; &#233;&#xE8; caf&eacute;</p>",
       QStringLiteral("> 10 exchanges & <b> \"x\" éè café")},
      {"a&nbsp;&nbsp;b &unknown; &#0;", "a  b &unknown; &#0;"},
      // Lists marked and numbered, table rows as lines with separated cells.
      {"<p>Two:</p><ol>\n  <li>first</li>\n  <li>second</li>\n</ol><ul><li>dot</li></ul>",
       "Two:\n\n1. first\n2. second\n\n- dot"},
      {"<table><thead><tr><td>Ticket</td><td>Title</td></tr></thead>\n"
       "<tr>\n<td> 12 </td>\n<td>&nbsp;</td><td>Printer</td></tr></table><p>after</p>",
       "Ticket | Title\n12 |   | Printer\n\nafter"},
      // Links keep their address, unless it is their text or within the page.
      {"<p>See <a href=\"https://kb.example/a?x=1&amp;y=2\" target=\"_blank\">this article</a>.</p>",
       "See this article <https://kb.example/a?x=1&y=2>."},
      {"<a href='https://kb.example/'>https://kb.example/</a> <a href=\"#top\">top</a>", "https://kb.example/ top"},
  };
  for (const auto &[html, text] : cases)
    EXPECT_EQ(HtmlToText(html), text) << html.toStdString();
}
