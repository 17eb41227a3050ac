// Expands an archive into memory and prints the size of each file: expand_to_memory ARCHIVE
#include <harbor6/harbor6.h>

#include <iostream>

int main(int count, char** arguments) {
    if (count != 2)
        return 2;
    try {
        harbor6::ClientInterface client; // takes every file
        host::Registry formats(client);
        for (const auto& folder : host::Registry::standard_folders())
            for (const auto& complaint : formats.load(folder))
                std::cerr << complaint << '\n';
        const auto archive = formats.open(arguments[1]);
        host::memory_target memory(formats.plain, 1u << 30);
        const pattern::AcquiredPtr<host::MemoryFolder> top(new host::MemoryFolder(memory));
        archive->addContentTo(*top, nullptr);
        for (const auto& [path, file] : memory.files)
            std::cout << nio::printable(path) << ' ' << file.bytes->size() << '\n';
        return 0;
    } catch (...) {
        std::cerr << nio::failure_text(std::current_exception()) << '\n';
        return 1;
    }
}
