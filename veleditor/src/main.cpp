// The program veleditor.
#include "veleditor/src/Startup.h"

int main(int argc, char **argv)
{
    return velEditor::runEditor(argc, argv);
}
