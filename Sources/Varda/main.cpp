// The program `varda`.
#include "Varda/App/OpenRequests.h"
#include "Varda/App/ProgramArguments.h"
#include "Varda/App/VardaApp.h"

#include <cstdio>

int main(int argc, char *argv[])
{
    using namespace varda;
    if (const auto text = ProgramArguments::infoText(argc, argv))
        return std::fputs(qPrintable(*text), stdout) == EOF;
    VardaApp application(argc, argv);
    if (const auto error = ProgramArguments::parseError()) {
        std::fprintf(stderr, "varda: %s\nTry 'varda --help'.\n", qPrintable(*error));
        return 1;
    }
    const auto file = ProgramArguments::file();
    if (file && OpenRequests::handOver(*file))
        return 0;
    return application.run(file);
}
