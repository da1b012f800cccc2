// A library of the installer's name that has no function to list drivers.

extern "C" __declspec(dllexport) int installerVersion()
{
    return 1;
}
