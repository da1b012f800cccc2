// A DLL with the runtime of the compiler inside, C++ library included, and next to nothing else.

#include <string>

extern "C" __declspec(dllexport) int qelBenchEmpty(const wchar_t* text)
{
    return std::stoi(std::wstring(text));
}
