#include "cert/CertProc.h"

#include <sys/stat.h>

#include <cstdio>

#include "cert/CertMgr.h"
#include "common/Console.h"

int CertProc::process(const std::string& command, ConfigDetails& config)
{
    if (command == "-rcerdefs") {
        return readDefaults(config);
    }
    if (command == "-csr") {
        return createRequest(config);
    }
    if (command == "-icer") {
        return installCertificate(config);
    }
    traceF("D [CVL] Unknown certificate command!\n");
    return 1;
}

bool CertProc::fileExists(const std::string& path)
{
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0;
}

int CertProc::readDefaults(const ConfigDetails& config)
{
    const std::unique_ptr<CertMgr> client = CertMgr::create(config.usbPath);
    std::string org, unit, country, state, city, common, altname;
    if (!client || client->getCertRequestDefaults(org, unit, country, state, city, common, altname) != 0) {
        traceF("D [CVL] Failed to read certificate defaults!\n");
        return 1;
    }
    userF("cer-org=%s\n", org.c_str());
    userF("cer-unit=%s\n", unit.c_str());
    userF("cer-state=%s\n", state.c_str());
    userF("cer-country=%s\n", country.c_str());
    userF("cer-city=%s\n", city.c_str());
    userF("cer-altname=%s\n", altname.c_str());
    userF("cer-common=%s\n", common.c_str());
    return 0;
}

int CertProc::createRequest(const ConfigDetails& config)
{
    const std::unique_ptr<CertMgr> client = CertMgr::create(config.usbPath);
    traceF("D [CVL] usb=\"%s\"\n", config.usbPath.c_str());
    traceF("D [CVL] --cer-org=\"%s\"\n", config.cerOrg.c_str());
    traceF("D [CVL] --cer-unit=\"%s\"\n", config.cerUnit.c_str());
    traceF("D [CVL] --cer-state=\"%s\"\n", config.cerState.c_str());
    traceF("D [CVL] --cer-country=\"%s\"\n", config.cerCountry.c_str());
    traceF("D [CVL] --cer-city=\"%s\"\n", config.cerCity.c_str());
    traceF("D [CVL] --cer-altname=\"%s\"\n", config.cerAltname.c_str());
    traceF("D [CVL] --cer-common=\"%s\"\n", config.cerCommon.c_str());
    traceF("D [CVL] --cer-path=\"%s\"\n", config.cerPath.c_str());

    if (!client || client->createCertRequest(config.cerOrg, config.cerUnit, config.cerCountry, config.cerState,
                                             config.cerCity, config.cerCommon, config.cerAltname) != 0) {
        traceF("D [CVL] Error creating Certificate Request!\n");
        return 1;
    }
    traceF("D [CVL] Certificate Request successfully created! Now saving...\n");
    if (client->saveCertRequest(config.cerPath) != 0) {
        traceF("D [CVL] Error saving Certificate Request to '%s'!\n", config.cerPath.c_str());
        return 1;
    }
    traceF("D [CVL] Certificate Request saved to '%s'!\n", config.cerPath.c_str());
    return 0;
}

int CertProc::installCertificate(const ConfigDetails& config)
{
    // The CA file wins when both are given.
    const bool installCA = !config.caCerFile.empty();
    const std::string& path = installCA ? config.caCerFile : config.signedCerFile;
    if (path.empty()) {
        return 1;
    }
    if (!fileExists(path)) {
        traceF("D [CVL] File not found! ('%s')\n", path.c_str());
        return 2;
    }
    const std::unique_ptr<CertMgr> client = CertMgr::create(config.usbPath);
    const int result = !client ? -1 : installCA ? client->installCACert(path) : client->installSignedCert(path);
    if (result != 0) {
        traceF("D [CVL] Error installing CA/Signed Certificate!\n");
        return 1;
    }
    traceF("D [CVL] CA/Signed Certificate successfully installed!\n");
    return 0;
}
