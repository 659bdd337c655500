#include "app/ViewerMain.h"

int main(int argc, char** argv)
{
    return ViewerMain::run(argc, argv);
}
