#include <gtest/gtest.h>
#include <winsock2.h>

#include <objbase.h>

int main(int argumentCount, char** arguments) {
    testing::InitGoogleTest(&argumentCount, arguments);
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    WSADATA data;
    WSAStartup(MAKEWORD(2, 2), &data);
    const int result = RUN_ALL_TESTS();
    WSACleanup();
    CoUninitialize();
    return result;
}
