#include "text/TarvoDspXmlDocument.h"
#include "text/TarvoDspXmlElement.h"

#include "../files/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <memory>

namespace
{
using ondo::XmlDocument;
using ondo::XmlElement;

/// A compact rendering of a tree, independent of the writer under test:
/// tag(name=value,...){child,...} with text nodes as 'text'.
std::string dump(const XmlElement& e)
{
    std::string out;
    if (e.isTextElement())
        return out.append("'").append(e.getText()).append("'");
    out = e.getTagName();
    for (int i = 0; i < e.getNumAttributes(); ++i)
        out.append(i == 0 ? "(" : ",").append(e.getAttributeName(i)).append("=").append(e.getAttributeValue(i));
    if (e.getNumAttributes() > 0)
        out += ")";
    for (auto* c = e.getFirstChildElement(); c != nullptr; c = c->getNextElement())
        out.append(c == e.getFirstChildElement() ? "{" : ",").append(dump(*c));
    if (e.getFirstChildElement() != nullptr)
        out += "}";
    return out;
}

std::string run(const std::string& command)
{
    std::string out;
    if (FILE* pipe = ::popen(command.c_str(), "r"))
    {
        std::array<char, 256> buffer{};
        for (std::size_t n; (n = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0;)
            out.append(buffer.data(), n);
        out += "|exit " + std::to_string(::pclose(pipe));
    }
    return out;
}

std::unique_ptr<XmlElement> samplePreset()
{
    auto root = std::make_unique<XmlElement>("preset");
    auto* source = root->createNewChildElement("source");
    source->setAttribute("index", 3);
    source->setAttribute("name", "Tom's \"grand\" <piano> & co \xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80");
    for (const char* attribute : {"alpha", "beta", "gamma", "delta", "epsilon", "zeta", "eta", "theta"})
        source->setAttribute(attribute, std::string(attribute) + "-value-long-enough");
    source->createNewChildElement("gain")->addTextElement("1.5");
    source->createNewChildElement("label")->addTextElement("tab\there\nnew line 'quoted' a<b");
    root->createNewChildElement("empty");
    return root;
}

TEST(XmlWriter, OutputIsAcceptedAndReadBackByXmllint)
{
    testing_files::TemporaryFolder folder;
    const std::string path = folder / "preset.xml";
    const auto root = samplePreset();
    ASSERT_TRUE(root->writeToFile(ondo::File(path), "", "UTF-8", 100));

    ASSERT_EQ(run("xmllint --noout '" + path + "' 2>&1"), "|exit 0") << "xmllint from libxml2-utils must accept it";
    // An independent parser gives back the values as they were set.
    const std::string name = root->getChildByName("source")->getStringAttribute("name");
    EXPECT_EQ(run("xmllint --xpath \"string(/preset/source[@index='3']/@name)\" '" + path + "'"), name + "\n|exit 0");
    EXPECT_EQ(run("xmllint --xpath \"string(/preset/source/label)\" '" + path + "'"),
              "tab\there\nnew line 'quoted' a<b\n|exit 0");

    const auto back = XmlDocument::parse(ondo::File(path));
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(dump(*back), dump(*root));
}

TEST(XmlWriter, HeaderCommentIndentationAndLineLimit)
{
    const auto root = samplePreset();
    const std::string text = root->createDocument("", false, true, "UTF-8", 100);
    const std::string head = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n\r\n<!-- created from libondo v5.0.0 ";
    EXPECT_EQ(text.substr(0, head.size()), head);
    EXPECT_NE(text.find("-->\r\n\r\n<preset>\r\n  <source index=\"3\" name="), std::string::npos);
    EXPECT_NE(text.find("\r\n    <gain>1.5</gain>\r\n"), std::string::npos);
    EXPECT_NE(text.find("\r\n  <empty/>\r\n</preset>\r\n"), std::string::npos);

    // Attribute lines break before the limit; only a single overlong attribute may pass it.
    std::size_t start = 0, longest = 0, lines = 0;
    for (std::size_t end; (end = text.find("\r\n", start)) != std::string::npos; start = end + 2, ++lines)
        longest = std::max(longest, end - start);
    EXPECT_LE(longest, 100u);
    EXPECT_GE(lines, 12u) << "eight long attributes cannot share a few lines";
    EXPECT_EQ(text.find('\n', 0), text.find("\r\n") + 1) << "every line ends with CR LF";

    XmlElement flat("a");
    flat.setAttribute("b", 1);
    flat.createNewChildElement("c")->addTextElement("x");
    EXPECT_EQ(flat.createDocument("<!DOCTYPE a>", true), "<?xml version=\"1.0\" encoding=\"UTF-8\"?><!DOCTYPE a><a b=\"1\"><c>x</c></a>");

    EXPECT_EQ(XmlElement::escapeText("a\"&<>'\t\x01\xC3\xA9\xE2\x82\xAC z"), "a&quot;&amp;&lt;&gt;'&#9;&#1;&#233;&#8364; z");
    EXPECT_EQ(XmlElement::escapeText("\xFF\xC3\xED\xA0\x80"), "&#255;&#195;&#237;&#160;&#128;")
        << "broken UTF-8 and surrogates keep their bytes";
    XmlElement zero("z");
    zero.addTextElement(std::string("a\0b", 3));
    EXPECT_EQ(XmlDocument::parse(zero.createDocument())->getText(), std::string("a\0b", 3)) << "a zero byte reads back";

    testing_files::TemporaryFolder folder;
    EXPECT_FALSE(root->writeToFile(ondo::File(folder.str()))) << "a folder is not written over";
}

TEST(XmlDocument, ReadsHandWrittenDocuments)
{
    struct Case
    {
        const char* document;
        const char* tree;
    };
    const Case cases[] = {
        {"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!-- about -->\n<a x='1' y=\"two 'q'\" z='\"'/>", "a(x=1,y=two 'q',z=\")"},
        {"<a>hi &amp; &lt;&gt;&quot;&apos; &#65;&#x42;&#xe9;</a>", "a{'hi & <>\"' AB\xC3\xA9'}"},
        {"<a><![CDATA[<raw> & ]]]]><!-- c --><b/>  <c k = 'v' >t</c>\n</a>", "a{'<raw> & ]]',b,c(k=v){'t'}}"},
        {"<!DOCTYPE a [\n <!ENTITY who \"World\">\n <!ENTITY b '<b n=\"1\">in</b>'>\n]>\n<a t='&who;'>Hello &who; &b;!</a>",
         "a(t=World){'Hello World ',b(n=1){'in'},'!'}"},
        {"<a></b>", "a"},
        {"<a>   </a>", "a"},
        {"<a.b-c:d_e/> trailing <ignored/>", "a.b-c:d_e"},
        {"\xEF\xBB\xBF <a/>", "a"},
        {"<a><b><c/></b>text</a>", "a{b{c},'text'}"},
        {"<?xml version='1.0'?><!-- one --><!-- two --><r><?pi?></r>", ""},
    };
    for (const auto& c : cases)
    {
        XmlDocument document{std::string(c.document)};
        const auto root = document.getDocumentElement();
        if (*c.tree == 0)
            EXPECT_EQ(root, nullptr) << c.document;
        else if (root == nullptr)
            ADD_FAILURE() << c.document << ": " << document.getLastParseError();
        else
            EXPECT_EQ(dump(*root), c.tree) << c.document;
    }

    XmlDocument keepingBlanks{std::string("<a>   </a>")};
    keepingBlanks.setEmptyTextElementsIgnored(false);
    EXPECT_EQ(dump(*keepingBlanks.getDocumentElement()), "a{'   '}");

    XmlDocument outerOnly{std::string("<a k='v'><b/><c/></a>")};
    EXPECT_EQ(dump(*outerOnly.getDocumentElement(true)), "a(k=v)");

    XmlDocument withType{std::string("<!DOCTYPE a [<!ENTITY e 'x'>]> <a/>")};
    ASSERT_NE(withType.getDocumentElement(), nullptr);
    EXPECT_EQ(withType.getDocumentType(), "<!DOCTYPE a [<!ENTITY e 'x'>]>");
}

TEST(XmlDocument, MalformedDocumentsSayWhy)
{
    std::string deep;
    for (int i = 0; i < 1000; ++i)
        deep += "<a>";
    const std::string laughs = "<!DOCTYPE a [<!ENTITY l0 'hahahahahahahahahahahahahahahahahahahahahahahahahahahahahahahahahahahahahahahahahahahahahahahahahahahaha'>"
                               "<!ENTITY l1 '&l0;&l0;&l0;&l0;&l0;&l0;&l0;&l0;&l0;&l0;'><!ENTITY l2 '&l1;&l1;&l1;&l1;&l1;&l1;&l1;&l1;&l1;&l1;'>"
                               "<!ENTITY l3 '&l2;&l2;&l2;&l2;&l2;&l2;&l2;&l2;&l2;&l2;'><!ENTITY l4 '&l3;&l3;&l3;&l3;&l3;&l3;&l3;&l3;&l3;&l3;'>"
                               "<!ENTITY l5 '&l4;&l4;&l4;&l4;&l4;&l4;&l4;&l4;&l4;&l4;'>]><a>&l5;</a>";
    struct Case
    {
        std::string document;
        std::string error;
    };
    const Case cases[] = {
        {"", "not enough input"},
        {" \r\n\t", "not enough input"},
        {"<?xml version='1.0'?>\n", "not enough input"},
        {"<?xml version='1.0'", "malformed header"},
        {"<!DOCTYPE a [<!ENTITY x 'y'>", "malformed DTD"},
        {"<>", "tag name missing"},
        {"<a><>", "tag name missing"},
        {"just text", "tag name missing"},
        {"<a b>", "expected '=' after attribute 'b'"},
        {"<a b='1>", "unmatched quotes"},
        {"<a b=", "unmatched quotes"},
        {"<a b=1/>", "illegal character found in a: '1'"},
        {"<a !>", "illegal character found in a: '!'"},
        {"<a/ >", "illegal character found in a: '/'"},
        {"<a><![CDATA[x</a>", "unterminated CDATA section"},
        {"<a><!-- x </a>", "unterminated comment"},
        {"<!-- x", "unterminated comment"},
        {"<a", "unmatched tags"},
        {"<a>text", "unmatched tags"},
        {"<a><b></a>", "unmatched tags"},
        {"<a></a", "unmatched tags"},
        {"<a>&foo;</a>", "illegal escape sequence"},
        {"<a>&amp</a>", "illegal escape sequence"},
        {"<a>&#xZZ;</a>", "illegal escape sequence"},
        {"<a>&#x110000;</a>", "illegal escape sequence"},
        {"<a>&#xD800;</a>", "illegal escape sequence"},
        {"<a x='&bar;'/>", "illegal escape sequence"},
        {"<!DOCTYPE a [<!ENTITY s '<b>&s;</b>'>]><a>&s;</a>", "illegal escape sequence"},
        {"<!DOCTYPE a [<!ENTITY s '&t;'><!ENTITY t '&s;'>]><a x='&s;'/>", "illegal escape sequence"},
        {deep, "elements nested too deeply"},
        {laughs, "entity expansion too large"},
    };
    for (const auto& c : cases)
    {
        XmlDocument document(c.document);
        EXPECT_EQ(document.getDocumentElement(), nullptr) << c.document;
        EXPECT_EQ(document.getLastParseError(), c.error) << c.document;
    }

    XmlDocument missing{ondo::File("/nonexistent/preset.xml")};
    EXPECT_EQ(missing.getDocumentElement(), nullptr);
    EXPECT_EQ(missing.getLastParseError(), "Could not open file \"/nonexistent/preset.xml\"");
}

TEST(XmlDocument, FuzzerFindingsStayAsRegressionInputs)
{
    // Each once broke the parser's round trip under the fuzzer (fuzz/XmlDocumentFuzzer.cpp).
    struct Case
    {
        std::string document;
        std::string tree;
    };
    const Case cases[] = {
        // Not UTF-8: the lone byte is written as the character of its code, and comes back so.
        {"<a x='on\xFF' y=\"two\"><![CDATA[<raw> & ]]]]><!-- c --><b/>  <c k = \"v\" >t &#65;</c>\n</a>",
         "a(x=on\xC3\xBF,y=two){'<raw> & ]]',b,c(k=v){'t A'}}"},
    };
    for (const auto& c : cases)
    {
        const auto root = XmlDocument::parse(c.document);
        ASSERT_NE(root, nullptr) << c.document;
        const auto again = XmlDocument::parse(root->createDocument());
        ASSERT_NE(again, nullptr) << c.document;
        EXPECT_EQ(dump(*again), c.tree);
    }
}

TEST(XmlElement, ChildrenAndAttributes)
{
    XmlElement root("root");
    auto* a = root.createNewChildElement("a");
    auto* b = root.addChildElement(std::make_unique<XmlElement>("b"));
    root.addTextElement("t1");
    root.addTextElement("t2");
    EXPECT_EQ(root.getNumChildElements(), 4);
    EXPECT_EQ(root.getChildElement(1), b);
    EXPECT_EQ(root.getChildElement(4), nullptr);
    EXPECT_EQ(root.getChildElement(-1), nullptr);
    EXPECT_EQ(root.getChildByName("b"), b);
    EXPECT_EQ(root.getChildByName("z"), nullptr);
    EXPECT_TRUE(root.hasTextContent());
    EXPECT_FALSE(a->hasTextContent());
    EXPECT_EQ(root.getText(), "t1t2");

    auto kept = root.removeChildElement(a, false);
    EXPECT_EQ(kept.get(), a);
    EXPECT_EQ(root.removeChildElement(b, true), nullptr);
    EXPECT_EQ(root.removeChildElement(a, true), nullptr) << "no longer a child";
    EXPECT_EQ(dump(root), "root{'t1','t2'}");

    a->setAttribute("index", 7);
    a->setAttribute("name", "x");
    a->setAttribute("index", "-2");
    EXPECT_EQ(dump(*a), "a(index=-2,name=x)") << "a second set replaces the value in place";
    EXPECT_EQ(a->getIntAttribute("index", -1), -2);
    EXPECT_EQ(a->getIntAttribute("missing", -1), -1);
    EXPECT_TRUE(a->hasAttribute("name"));
    a->removeAttribute("index");
    EXPECT_FALSE(a->hasAttribute("index"));
    EXPECT_EQ(a->getAttributeName(5), "");

    // Siblings are released one by one: a long list does not recurse in its destructor.
    for (int i = 0; i < 200000; ++i)
        a->createNewChildElement("x");
    EXPECT_EQ(a->getNumChildElements(), 200000);
}
} // namespace
