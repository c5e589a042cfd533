#include "app/MainWindow.h"
#include "app/NativeLookingApplication.h"

int main(int argc, char* argv[])
{
    NativeLookingApplication::Prepare();
    NativeLookingApplication application(argc, argv);
    MainWindow window(nullptr);
    window.show();
    return application.exec();
}
