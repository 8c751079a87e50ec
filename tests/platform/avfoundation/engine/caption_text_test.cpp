#include "platform/avfoundation/engine/CaptionText.h"

#include <gmock/gmock.h>

namespace {

TEST(CaptionText, isWhatTheDemuxersMeanByTheBytes) {
  // Escaped as long as no tag has been seen, then as it is in the file.
  EXPECT_EQ(captionFromMarkup("&lt;font color=&quot;red&quot;&gt;a&lt;/font&gt; &amp;amp; b"),
            "<font color=\"red\">a</font> &amp; b");
  EXPECT_EQ(captionFromMarkup("<i>a</i> &lt; b & c"), "<i>a</i> &lt; b & c");
  EXPECT_EQ(captionFromMarkup("a & b &lt; c &#0; \xFF"), "a & b &lt; c &#0; \uFFFD");

  EXPECT_EQ(captionFromScript("0,0,Default,,0,0,0,,{\\an8}one, {\\i1}two\\Nthree\\hfour {never closed"),
            "one, two\nthree four");
  EXPECT_EQ(captionFromScript("0,0,too,few"), "");

  EXPECT_EQ(tidyCaption(std::string_view("\n a\r\nb\rc\t\0d\x1B\xC2\x85"
                                         "e\n ",
                                         18)),
            "a\nb\nc de");
  EXPECT_EQ(tidyCaption(std::string(1 << 20, 'w')).size(), captionBytesLimit);
}

}  // namespace
