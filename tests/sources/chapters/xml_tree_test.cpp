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
                 "<!DOCTYPE a SYSTEM \"matroska>.dtd\">\n<a x='1>' y=\"/\">\n"
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
    EXPECT_EQ(ErrorOf(""), "1: it is no XML document: no document element found");
    EXPECT_EQ(ErrorOf("text"), "1: it is no XML document: no document element found");
    EXPECT_EQ(ErrorOf("<a>\n<b>\n</a>"), "3: it is no XML document: start-end tags mismatch");
    EXPECT_EQ(ErrorOf("<a>\n<b"), "2: it is no XML document: error parsing start element tag");
    EXPECT_EQ(ErrorOf("<a>\n text"), "2: it is no XML document: start-end tags mismatch");
    EXPECT_EQ(ErrorOf("<a/>\n<b/>"), "2: something stands behind the document's end");
    EXPECT_EQ(ErrorOf("<a>1 < 2</a>"), "1: it is no XML document: could not determine tag type");
    EXPECT_EQ(ErrorOf("<a><!-- </a>"), "1: it is no XML document: error parsing comment");
}

TEST(XmlTree, WhatADocumentDeclaresIsNeitherLookedUpNorPutInItsPlace) {
    EXPECT_EQ(ErrorOf("\n<!DOCTYPE a [<!ENTITY x SYSTEM \"file:///etc/passwd\">]><a>&x;</a>"),
              "2: a document type with declarations of its own is not read");
    EXPECT_EQ(ParseXml("<!DOCTYPE a SYSTEM \"file:///etc/passwd\"><a>&x;</a>").text, "&x;");
    EXPECT_EQ(ParseXml("<a>1 & 2</a>").text, "1 & 2");
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
