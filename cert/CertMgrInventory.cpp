// The certificate manager's lists decide whether the printer holds
// certificates of its own: the friendly names first, then the CAs.
#include "cert/CertMgrInventory.h"

#include <memory>
#include <string>
#include <vector>

#include "cert/CertMgr.h"
#include "npa/NPAChannel.h"

bool CertMgrInventory::holdsOwnCertificates(const NPAChannel& channel)
{
    const std::unique_ptr<CertMgr> client = CertMgr::create(channel.duplicate());
    if (!client) return false;
    std::vector<std::string> names;
    if (client->getFriendlyNameList(names) == 0 && names.size() > 1) return true;
    names.clear();
    return client->getCACommonNameList(names) == 0 && !names.empty();
}
