#include "mkvmux/attachment_options.h"

#include <map>
#include <utility>

#include "mkvmux/failure.h"
#include "mkvmux/option_kinds.h"
#include "mkvmux/text.h"

namespace mkvmux {

AttachmentOptionParser::AttachmentOptionParser(CLI::App& app) : m_app(app) {
    app.option_defaults()->group("Attachments");
    m_attach = AddRepeatable(app, "--attach", m_files, "attach this file to the output", "FILE");
    m_attach->check(NoOption());
    m_mimeType = AddRepeatable(app, "--attach-mime", m_mimeTypes,
                               "the MIME type of the next attachment; without it the extension decides", "TYPE");
    m_name = AddRepeatable(app, "--attach-name", m_names, "the name of the next attachment in the output", "NAME");
    m_description = AddRepeatable(app, "--attach-description", m_descriptions, "describe the next attachment", "TEXT");
    for (CLI::Option* const text : {m_mimeType, m_name, m_description}) {
        text->check(NoOptionOf(app));
    }
}

// Goes through the options as they were given; each option's values are its own in that order.
std::vector<AttachmentOptions> AttachmentOptionParser::Read() const {
    std::vector<AttachmentOptions> attachments;
    AttachmentOptions next;
    std::map<const CLI::Option*, size_t> used;
    const char* unattached = nullptr;
    for (const CLI::Option* const option : m_app.parse_order()) {
        const auto value = [&] { return option->results().at(used[option]++); };
        if (option == m_mimeType) {
            next.mimeType = value();
            unattached = "--attach-mime";
        } else if (option == m_name) {
            next.name = WideFromUtf8(value());
            unattached = "--attach-name";
        } else if (option == m_description) {
            next.description = WideFromUtf8(value());
            unattached = "--attach-description";
        } else if (option == m_attach) {
            next.path = WideFromUtf8(value());
            attachments.push_back(std::exchange(next, {}));
            unattached = nullptr;
        }
    }
    if (unattached != nullptr) {
        throw Failure(std::string(unattached) + ": speaks of the next attachment, and no --attach follows");
    }
    return attachments;
}

} // namespace mkvmux
