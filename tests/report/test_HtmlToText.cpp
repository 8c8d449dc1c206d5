#include "report/HtmlToText.h"
#include "support/TempConfig.h"

#include <gtest/gtest.h>

TEST(HtmlToTextTest, ATextBlockReadsAsThePageShowsIt)
{
  const std::pair<QString, QString> cases[] = {
      // Blanks collapsed, blocks set apart, headings underlined.
      {"<h2>Unassigned after 15 minutes</h2>\n<p>These   tickets\n are <b>not</b> yet assigned.</p><div>next</div>",
       "Unassigned after 15 minutes\n---------------------------\n\nThese tickets are not yet assigned.\n\nnext"},
      {"<h1>Title</h1><h3>Sub</h3>a<br>b<br><br>c", "Title\n=====\n\nSub\n\na\nb\n\nc"},
      // Head, scripts, styles and comments give no text; what is left open is closed.
      {"<!DOCTYPE html><html><head><title>T</title><style>p { color: red }</style></head>"
       "<body><!-- hidden\n comment --><SCRIPT>alert('x<p>')</SCRIPT><p>shown <b>bold<p>next</body></html>",
       "shown bold\n\nnext"},
      // Entities and character references decoded.
      {"<p>&gt; 10 exchanges &amp; &lt;b&gt; &quot;x&quot; &#233;&#xE8; caf&eacute; a&nbsp;&nbsp;b</p>",
       QStringLiteral("> 10 exchanges & <b> \"x\" éè café a  b")},
      // Lists marked, numbered and nested; table rows as lines with separated cells.
      {"<p>Two:</p><ol>\n  <li>first</li>\n  <li>second<ul><li>inner</li></ul></li>\n</ol><ul><li>dot</li></ul>",
       "Two:\n\n1. first\n2. second\n  - inner\n\n- dot"},
      {"<table><tr><th>Ticket</th><th>Title</th></tr>\n<tr><td> 12 </td><td>Printer</td></tr></table><p>after</p>",
       "Ticket | Title\n12 | Printer\n\nafter"},
      {"<pre>a\n  b</pre>", "a\n  b"},
      // Links keep their address, unless it is their text or within the page.
      {"<p>See <a href=\"https://kb.example/a?x=1&amp;y=2\" target=\"_blank\">this article</a>.</p>",
       "See this article <https://kb.example/a?x=1&y=2>."},
      {"<a href='https://kb.example/'>https://kb.example/</a> <a href=\"#top\">top</a>", "https://kb.example/ top"},
  };
  for (const auto &[html, text] : cases)
    EXPECT_EQ(HtmlToText(html), text) << html.toStdString();
}
