// The program `varda`.
#include "Varda/VardaApp.h"

int main(int argc, char *argv[])
{
    return varda::VardaApp(argc, argv).run();
}
