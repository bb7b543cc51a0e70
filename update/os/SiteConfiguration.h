#pragma once
// Site configuration of the production network: the file server that holds production data.
// Change these for another site; nothing else in the program names the server.
//
// The instrument PCs on the production network have no name service, so the server is reached
// by its numeric address; a site with working name resolution sets
// kProductionFileServerUseAddress to false to use the host name instead.

inline constexpr const char kProductionFileServerHostName[] = "prodfiles";
inline constexpr const char kProductionFileServerAddress[] = "192.168.1.10";
inline constexpr bool kProductionFileServerUseAddress = true;

inline const char* GetProductionFileServer() {
    return kProductionFileServerUseAddress ? kProductionFileServerAddress : kProductionFileServerHostName;
}
