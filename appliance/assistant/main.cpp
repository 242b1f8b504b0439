// The voice assistant's process.
#include "AppMain.h"
#include "AssistantApp.h"

int main(int argc, char** argv)
{
    return Appliance::runApp("The voice assistant: delivers to the service what a spoken sentence means.",
                             argc, argv, [] { return std::make_unique<Assistant::AssistantApp>(); });
}
