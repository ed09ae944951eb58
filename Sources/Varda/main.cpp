// The program `varda`.
#include "Varda/App/ProgramArguments.h"
#include "Varda/App/VardaApp.h"

#include <cstdio>

int main(int argc, char *argv[])
{
    if (const auto text = varda::ProgramArguments::answer(argc, argv))
        return std::fputs(qPrintable(*text), stdout) == EOF;
    varda::VardaApp application(argc, argv);
    if (const auto mistake = varda::ProgramArguments::mistake()) {
        std::fprintf(stderr, "varda: %s\nTry 'varda --help'.\n", qPrintable(*mistake));
        return 1;
    }
    return application.run();
}
