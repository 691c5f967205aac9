#include "report/tree_text.h"

#include "report/html_text.h"

namespace report {

namespace {

std::string Sizes(const Node& node, UINT64 fileBytes) {
    const double share = fileBytes == 0 ? 0 : static_cast<double>(node.size) / static_cast<double>(fileBytes);
    constexpr double kPercent = 100;
    return "<span class=\"size\" title=\"" + CountText(node.size) + " bytes, " + Fixed(share * kPercent, 2) +
           " % of the file\">" + BytesText(node.size) + "</span><meter value=\"" + Fixed(share, 4) +
           "\"></meter><span class=\"at\">at " + CountText(node.start) + "</span>";
}

std::string Line(const Node& node, UINT64 fileBytes) {
    if (node.more != 0) {
        return "<span class=\"more\">" + CountText(node.more) + " more " + Escaped(node.name) + "</span>" +
               Sizes(node, fileBytes);
    }
    const std::string value = node.value.empty() ? "" : "<span class=\"value\">" + Escaped(node.value) + "</span>";
    return "<span class=\"name\">" + Escaped(node.name) + "</span>" + value +
           (node.isWhole ? "" : "<span class=\"bad\">damaged</span>") + Sizes(node, fileBytes);
}

void Append(std::string& html, const std::vector<Node>& nodes, UINT64 fileBytes, bool isOpen) {
    html += "<ul>";
    for (const Node& node : nodes) {
        if (node.children.empty()) {
            html += "<li>" + Line(node, fileBytes) + "</li>\n";
            continue;
        }
        html +=
            std::string("<li><details") + (isOpen ? " open" : "") + "><summary>" + Line(node, fileBytes) + "</summary>";
        Append(html, node.children, fileBytes, false);
        html += "</details></li>\n";
    }
    html += "</ul>";
}

} // namespace

std::string TreeText(const std::vector<Node>& nodes, UINT64 fileBytes) {
    std::string html;
    Append(html, nodes, fileBytes, true);
    return html;
}

} // namespace report
