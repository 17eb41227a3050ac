#include "host/listing_tree.h"

#include "harbor6/groundwork/text.h"
#include "host/platform/console.h"
#include "host/report.h"

namespace host {

void listing_tree::add(const std::string& path, const std::string& note) {
    ++files;
    std::size_t at = 0;
    std::size_t start = 0;
    for (auto end = path.find('/'); end != path.npos; start = end + 1, end = path.find('/', start)) {
        auto next = folders[at][path.substr(start, end - start)].folder;
        if (next == 0) {
            next = folders.size();
            folders[at][path.substr(start, end - start)].folder = next;
            folders.emplace_back();
        }
        at = next;
    }
    folders[at][path.substr(start)].notes.push_back(note);
}

void listing_tree::print(console& out, const std::string& title) const {
    out.print(title + '\n');
    struct level {
        folder::const_iterator next, end;
    };
    std::vector<level> levels = {{folders[0].begin(), folders[0].end()}};
    std::string indent; // of the names in the last level
    while (!levels.empty()) {
        auto& [next, end] = levels.back();
        if (next == end) {
            levels.pop_back();
            for (const auto* const step : {"    ", "│   "})
                if (indent.ends_with(step)) {
                    indent.resize(indent.size() - std::string(step).size());
                    break;
                }
            continue;
        }
        const auto& [name, found] = *next++;
        const bool last = next == end;
        const auto line = [&](const std::string& text, bool final) {
            out.print(indent + (final ? "└── " : "├── ") + text + '\n');
        };
        for (std::size_t i = 0; i < found.notes.size(); ++i)
            line(nio::printable(name) + (found.notes[i].empty() ? "" : " (" + found.notes[i] + ")"),
                 last && found.folder == 0 && i + 1 == found.notes.size());
        if (found.folder == 0)
            continue;
        line(nio::printable(name) + '/', last);
        indent += last ? "    " : "│   ";
        levels.push_back({folders[found.folder].begin(), folders[found.folder].end()});
    }
    out.print(counted(files, "file") + '\n');
}

} // namespace host
