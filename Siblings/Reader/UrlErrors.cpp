#include "UrlErrors.h"

namespace
{
struct WAY_OUT
{
    CURLcode eResult;
    const char* pText; // the host stands in front of it, the detail behind
};

const WAY_OUT s_aryWaysOut[] = {
    {CURLE_URL_MALFORMAT, "the address is not well formed. Check how it is written"},
    {CURLE_COULDNT_RESOLVE_HOST, "no such host is known. Check the address and the network connection"},
    {CURLE_COULDNT_RESOLVE_PROXY, "the proxy is not known. Check the variables http_proxy and https_proxy"},
    {CURLE_COULDNT_CONNECT, "no connection. The server may be down, or a firewall in the way; try again later"},
    {CURLE_PEER_FAILED_VERIFICATION,
     "the server's certificate cannot be trusted. If it comes from an authority of your "
     "own, name the authority's file with the property CA_FILE"},
    {CURLE_SSL_CACERT_BADFILE, "the file of the property CA_FILE cannot be read. Check its name and permissions"},
    {CURLE_SSL_CONNECT_ERROR, "no secure connection could be agreed on. Check that the port speaks https"},
    {CURLE_TOO_MANY_REDIRECTS, "one redirect leads to the next without end. Use the final address, or tell the "
                               "server's owner"},
    {CURLE_UNSUPPORTED_PROTOCOL, "the answer is not HTTP, or a redirect leads to something that is neither http nor "
                                 "https and is not followed. Check the address and its port"},
    {CURLE_WEIRD_SERVER_REPLY, "the answer is not HTTP. Check the address and its port"},
    {CURLE_GOT_NOTHING, "the server hung up without an answer. Try again later"},
    {CURLE_PARTIAL_FILE, "the server hung up before all of the announced data came. Load it again"},
    {CURLE_RECV_ERROR, "the connection broke. Load it again"},
    {CURLE_SEND_ERROR, "the connection broke. Try again"},
    {CURLE_OUT_OF_MEMORY, "the answer has a header line that is too long, or there is no memory left. Try another "
                          "address"},
};
} // namespace

std::string GetTransferErrorText(CURLcode eResult, const char* pDetail, const std::string& strHost, int nTimeoutMS)
{
    if (eResult == CURLE_OPERATION_TIMEDOUT)
        return GetTimeoutErrorText(strHost, nTimeoutMS);
    std::string strDetail = pDetail != nullptr && *pDetail != 0 ? pDetail : curl_easy_strerror(eResult);
    const char* pWayOut = "the transfer failed. Try again later";
    for (const WAY_OUT& row : s_aryWaysOut)
    {
        if (row.eResult == eResult)
        {
            pWayOut = row.pText;
            break;
        }
    }
    return strHost + ": " + pWayOut + " (" + strDetail + ").";
}

std::string GetTimeoutErrorText(const std::string& strHost, int nTimeoutMS)
{
    return strHost + ": nothing came for " + std::to_string(nTimeoutMS) +
           " ms. Try again later, or allow for a longer time-out.";
}

std::string GetStatusErrorText(int nStatus, const std::string& strHost)
{
    const char* pWayOut = "Try again later";
    if (nStatus == 401 || nStatus == 403)
        pWayOut = "Name a user and password in the address, or ask the server's owner for access";
    else if (nStatus == 404 || nStatus == 410)
        pWayOut = "Check the address";
    else if (nStatus < 500)
        pWayOut = "Check the address and the parameters of the request";
    return strHost + ": the server answered with status " + std::to_string(nStatus) + ". " + pWayOut + ".";
}
