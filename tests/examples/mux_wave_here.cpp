// mux_wave as it is, under Wine: with a file writer that it can connect to.
#include <cstdio>

#include "tests/examples/file_writer_class.h"

int RunExample(int count, wchar_t** arguments);

int wmain(int count, wchar_t** arguments) {
    const test_examples::FileWriterClass fileWriter;
    if (FAILED(fileWriter.Result())) {
        std::fprintf(stderr, "mux_wave: no file writer can be put in the place of Wine's\n");
        return 2;
    }
    return RunExample(count, arguments);
}
