#include "platform/uikit/NSHTMLImport.h"

#include <gmock/gmock.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <QTemporaryFile>
#include <QTextDocument>

namespace {

int warnings = 0;
int requests = 0;

// No application object anywhere in this program.
class HTMLImportTest : public testing::Test {
 protected:
  HTMLImportTest() {
    warnings = requests = 0;
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) { ++warnings; });
    QTextDocument::setDefaultResourceProvider([](const QUrl&) { return ++requests, QVariant(); });
  }
  ~HTMLImportTest() override {
    qInstallMessageHandler(nullptr);
    QTextDocument::setDefaultResourceProvider({});
    EXPECT_EQ(warnings, 0);
    EXPECT_EQ(requests, 0);
  }
};

// Runs in brackets with what is said of them: "[ib:text]", "[#ff0000:text]".
std::string imported(std::string_view html) {
  std::string all;
  const auto text = NSAttributedStringFromHTML(html);
  if (!text) return "nil";
  for (const auto& [characters, look] : text->runs) {
    std::string said;
    if (look.font && look.font->italic) said += 'i';
    if (look.font && look.font->weight != UIFont::weightRegular) said += 'b';
    if (look.underline) said += 'u';
    if (const auto color = look.foregroundColor) {
      char digits[8];
      std::snprintf(digits, sizeof digits, "#%02x%02x%02x", int(color->red * 255 + 0.5), int(color->green * 255 + 0.5),
                    int(color->blue * 255 + 0.5));
      said += digits;
    }
    all += "[" + said + (said.empty() ? "" : ":") + characters + "]";
  }
  return all;
}

std::string repeated(std::string_view text, int times) {
  std::string all;
  while (times-- > 0) all += text;
  return all;
}

TEST_F(HTMLImportTest, givesEachRunTheLookOfTheBodyAndItsOwn) {
  const auto text = NSAttributedStringFromHTML(
      "<body style=\"color: #FFC000; font-size: 42.500000px; font-family: Source Sans 3; text-align: justify\">"
      "first <i>sec</i><em>ond</em></br>th<font color=red><u>ird</u></font></body>");
  const UIFont font{"Source Sans 3", 42.5};
  NSTextAttributes body{.font = font,
                        .foregroundColor = UIColor::colorWithRed(1, 0xC0 / 255.0, 0, 1),
                        .paragraphStyle = NSParagraphStyle{NSTextAlignmentJustified}};
  NSTextAttributes slanted = body;
  slanted.font->italic = true;
  NSTextAttributes red = body;
  red.foregroundColor = UIColor::redColor();
  red.underline = true;
  ASSERT_TRUE(text && text->runs.size() == 4);
  ASSERT_TRUE(text->runs[0].attributes.foregroundColor);
  body.foregroundColor = slanted.foregroundColor = text->runs[0].attributes.foregroundColor;  // rounded
  EXPECT_EQ(text->runs[0], (NSAttributedString::Run{"first ", body}));
  EXPECT_EQ(text->runs[1], (NSAttributedString::Run{"second", slanted}));
  EXPECT_EQ(text->runs[2], (NSAttributedString::Run{"\nth", body}));
  EXPECT_EQ(text->runs[3], (NSAttributedString::Run{"ird", red}));
  EXPECT_EQ(imported("<body style=\"color: #FFC000\">x"), "[#ffc000:x]");
  EXPECT_EQ(NSAttributedStringFromHTML("plain"), NSAttributedString("plain", {})) << "what nobody said is nil";
}

TEST_F(HTMLImportTest, readsWhatPeopleWriteInSubtitles) {
  const std::pair<const char*, const char*> cases[]{
      // breaks
      {"a<br>b<BR/>c</br>d</ br>e", "[a\nb\nc\nd</ br>e]"},
      {"<p>a</p>\n<p>b<p>c</p><div>d<div>e</div></div>f<br>", "[a\nb\nc\nd\ne\nf]"},
      {"a<br><br>b<p></p>", "[a\n\nb]"},
      {"  a \n b\t<i> c</i> <br> d ", "[a b ][i:c][\nd]"},
      {"<table><tr><td>a<td>b<tr><td colspan=2000000000>c</table>d", "[a b\nc\nd]"},
      {"<ul><li>a<li>b</ul>", "[a\nb]"},
      // looks
      {"<b>a</b><strong>b</strong><u>c</u>", "[b:ab][u:c]"},
      {"<font color=\"00ff00\">a</font><font color='#F00'>b</font><font color=blue>c</font>",
       "[#00ff00:a][#ff0000:b][#0000ff:c]"},
      {"<font color=\"##0000ff>a</font><font color=nonsense>b</font><font color=transparent>c", "[#0000ff:a][bc]"},
      {"<span foreground=\"#ff0000\" style='italic' weight=bold underline=single>a</span>", "[ibu#ff0000:a]"},
      {"<span style=\"font-style: italic; font-weight: 900; color: url(x); background: url(y)\">a</span>", "[ib:a]"},
      {"<font color=red><font size=7>a</font>b</font>c", "[#ff0000:ab][c]"},
      {"<span style='font-size: 0px; font-weight: -5'>a</span><span style='font-size:nanpx'>b</span>", "[ab]"},
      // nesting
      {"<i>a<b>b</i>c</b>d", "[i:a][ib:b][cd]"},
      {"</i>a</b></font>", "[a]"},
      {"<i>a<p>b</p>c", "[i:a\nb\nc]"},
      // what is not markup
      {"a < b & c > d <3 <<e <", "[a < b & c > d <3 <<e <]"},
      {"a <b and no end", "[a <b and no end]"},
      {"x&lt;i&gt; &amp; &eacute;&#8230;&#x21; &nope; &#0;&#7;&#xd800;", "[x<i> & é…! &nope; ?]"},
      {"{\\an8}a", "[{\\an8}a]"},
      // what vanishes
      {"<c.yellow>a</c> <v Bob>b <blink>c</blink><john@example.org>d", "[a b cd]"},
      {"a<!-- <i>b -->c<!DOCTYPE html>d<?xml x?>e<!-- f", "[acde<!-- f]"},
      {"<title>a</title><script>if (a<b) c('</p>')</SCRIPT >d<style>e", "[d]"},
      {"", ""},
      {"<i></i> <br>", ""},
  };
  for (const auto& [html, runs] : cases) EXPECT_EQ(imported(html), runs) << html;
}

TEST_F(HTMLImportTest, survivesWhatIsMeantToHurt) {
  EXPECT_EQ(imported(std::string("a\0b\xFF\xC0\x80<i\0>c", 12)), "[ab\uFFFD\uFFFD\uFFFDc]");
  EXPECT_EQ(imported(repeated("<i>", 5000) + "deep"), "[i:deep]");
  EXPECT_EQ(imported(repeated("<i><b>", 100) + "a" + repeated("</b></i>", 100) + "b"), "[ib:a][b]");
  EXPECT_EQ(imported(repeated("<p>a", 3000)), "[" + repeated("a\n", 2999) + "a]");
  for (const char* piece : {"<", "<a", "<!--", "&", "&#", "<i>", "</i>", "<table><tr><td>", "<script>", "<i style=",
                            "<ul>", "é", "<br>", "<font color=#123456>x", "\xE2\x80\xA9", "\xEF\xB7\x90"}) {
    EXPECT_NE(imported(repeated(piece, 1 << 20)), "nil") << piece;
  }
}

// The file is watched for being opened; a document of Qt's own shows that the watch works.
TEST_F(HTMLImportTest, loadsNothing) {
  QTemporaryFile file;
  ASSERT_TRUE(file.open());
  const int watch = inotify_init1(IN_NONBLOCK);
  ASSERT_GE(inotify_add_watch(watch, file.fileName().toUtf8().data(), IN_OPEN), 0);
  const auto wasOpened = [watch] {
    char event[1024];
    return read(watch, event, sizeof event) > 0;
  };
  for (const char* where : {"file://%1", "%1", "http://127.0.0.1/%1"}) {
    const QString url = QString(where).arg(file.fileName());
    const QString html = QString(
                             "<link rel=stylesheet type=text/css href='%1'><style>@import url(%1);</style>"
                             "<body background='%1' style=\"background-image: url('%1'); list-style-image: url(%1)\">"
                             "<img src='%1'><table background='%1'><tr><td>a</table><object data='%1'></object>"
                             "<a href='%1'>b</a><span style=\"background: url(%1)}; @import '%1'; * {\">c</span>")
                             .arg(url);
    EXPECT_EQ(imported(html.toStdString()), "[a\nbc]");
  }
  EXPECT_FALSE(wasOpened());

  QTextDocument open;
  open.setHtml(
      QString("<link type=text/css href='file://%1'><link type=text/css href='http://x/'>").arg(file.fileName()));
  EXPECT_TRUE(wasOpened());
  EXPECT_EQ(std::exchange(requests, 0), 1);
  close(watch);
}

}  // namespace
