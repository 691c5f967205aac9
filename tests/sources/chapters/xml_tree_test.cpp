// XML as strangers write it, and as nobody should.
#include "sources/chapters/xml_tree.h"

#include <gtest/gtest.h>

#include "sources/chapters/text_error.h"

namespace chapters {
namespace {

// "LINE: reason"; empty when the text is read.
std::string ErrorOf(std::string_view text) {
    try {
        (void)ParseXml(text);
        return {};
    } catch (const TextError& error) {
        return std::to_string(error.Line()) + ": " + error.what();
    }
}

TEST(XmlTree, ElementsTextsAndLinesAreRead) {
    const XmlElement root =
        ParseXml("<?xml version=\"1.0\"?>\r\n<!-- <a> -->\n"
                 "<!DOCTYPE a SYSTEM \"matroska[>.dtd\">\n<a x='1>' y=\"/\">\n"
                 " <b>1 &lt;&#65;&#x20ac;<!-- no -->2</b>\n <c/><b><![CDATA[<&>]]></b></a >\n<!-- -->\n");
    EXPECT_EQ(root.name, "a");
    EXPECT_EQ(root.line, 4u);
    ASSERT_EQ(root.children.size(), 3u);
    EXPECT_EQ(root.children[0].text, "1 <A\xe2\x82\xac"
                                     "2");
    EXPECT_EQ(root.children[0].line, 5u);
    EXPECT_EQ(root.children[1].name, "c");
    EXPECT_EQ(root.children[2].text, "<&>");
}

TEST(XmlTree, WhatIsNoDocumentIsRefusedWithItsLine) {
    EXPECT_EQ(ErrorOf(""), "1: it is no XML document");
    EXPECT_EQ(ErrorOf("text"), "1: it is no XML document");
    EXPECT_EQ(ErrorOf("<a>\n<b>\n</a>"), "3: <b> of line 2 is not ended by </a>");
    EXPECT_EQ(ErrorOf("<a>\n<b"), "2: a tag does not end");
    EXPECT_EQ(ErrorOf("<a>\n text"), "1: <a> does not end");
    EXPECT_EQ(ErrorOf("<a/>\n<b/>"), "2: something stands behind the document's end");
    EXPECT_EQ(ErrorOf("<a>1 & 2</a>"), "1: '&' begins no reference; '&amp;' stands for the character itself");
    EXPECT_EQ(ErrorOf("<a>1 < 2</a>"), "1: '<' is followed by no name; '&lt;' stands for the character itself");
    EXPECT_EQ(ErrorOf("<a><!-- </a>"), "1: a comment does not end");
    EXPECT_EQ(ErrorOf("<a>&#0;</a>"), "1: the entity '#0' is not known");
    EXPECT_EQ(ErrorOf("<a>&#xD800;</a>"), "1: the entity '#xD800' is not known");
    EXPECT_EQ(ErrorOf("<a>&#x110000;</a>"), "1: the entity '#x110000' is not known");
}

TEST(XmlTree, NoEntityIsDeclaredOrLookedUp) {
    EXPECT_EQ(ErrorOf("<!DOCTYPE a [<!ENTITY x SYSTEM \"file:///etc/passwd\">]><a>&x;</a>"),
              "1: a document type with declarations of its own is not read");
    EXPECT_EQ(ErrorOf("<!DOCTYPE a SYSTEM \"file:///etc/passwd\">\n<a>&x;</a>"), "2: the entity 'x' is not known");
}

TEST(XmlTree, DepthAndNumberAreBounded) {
    const auto nested = [](size_t depth) {
        std::string text;
        for (size_t i = 0; i < depth; ++i) {
            text += "<a>";
        }
        for (size_t i = 0; i < depth; ++i) {
            text += "</a>";
        }
        return text;
    };
    EXPECT_EQ(ErrorOf(nested(kMaxXmlDepth)), "");
    EXPECT_EQ(ErrorOf(nested(kMaxXmlDepth + 1)), "1: it has too many elements, or too deep ones");
    std::string many = "<a>";
    for (size_t i = 0; i < kMaxXmlElements; ++i) {
        many += "<b/>";
    }
    EXPECT_EQ(ErrorOf(many + "</a>"), "1: it has too many elements, or too deep ones");
}

} // namespace
} // namespace chapters
