// The partner app's process.
#include "AppMain.h"
#include "PartnerApp.h"

int main(int argc, char** argv)
{
    return Appliance::runApp(
        "The partner's app: shows products, a cart and the check-out as the service asks for them.", argc,
        argv, [] { return std::make_unique<Partner::PartnerApp>(); });
}
