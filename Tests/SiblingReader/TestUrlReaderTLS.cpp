#include "NginxServer.h"
#include "ReaderTesting.h"

namespace
{
class UrlReaderTLS : public testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        s_pServer = new NginxServer(true);
        s_pServer->Write("small.txt", "small text");
        s_pServer->Write("large.bin", MakeBytes(1000000));
    }
    static void TearDownTestSuite()
    {
        delete s_pServer;
        s_pServer = nullptr;
    }
    void SetUp() override { ASSERT_TRUE(s_pServer->GetIsRunning()) << "are nginx and openssl there?"; }
    static ReaderPtr Make(const std::string& strHost, const std::string& strCAFile)
    {
        ReaderPtr pReader = MakeReader(s_pServer->GetURL("/files/large.bin", strHost));
        pReader->SetProperty(L"CA_FILE", WidenUTF8(strCAFile).c_str());
        return pReader;
    }

    inline static NginxServer* s_pServer = nullptr;
};
} // namespace

TEST_F(UrlReaderTLS, KnownAuthorityIsTrusted)
{
    const ReaderPtr pReader = Make("127.0.0.1", s_pServer->GetCertificate());
    ASSERT_TRUE(pReader->Open()) << GetInfo(*pReader, L"Error");
    EXPECT_EQ(pReader->GetLength(), 1000000);
    EXPECT_TRUE(ReadAll(*pReader) == MakeBytes(1000000));
    EXPECT_EQ(pReader->Seek(500000, 0), 500000);
    EXPECT_EQ(ReadText(*pReader, 100), MakeBytes(1000000).substr(500000, 100));
}

TEST_F(UrlReaderTLS, StrangeCertificateIsRefused)
{
    const ReaderPtr pReader = Make("127.0.0.1", "");
    EXPECT_FALSE(pReader->Open());
    EXPECT_EQ(GetInfo(*pReader, L"StatusCode"), "");
    EXPECT_NE(GetInfo(*pReader, L"Error").find("CA_FILE"), std::string::npos) << GetInfo(*pReader, L"Error");
    for (const wchar_t* pName : {L"VERIFY_TLS", L"INSECURE", L"SSL_VERIFYPEER"})
        pReader->SetProperty(pName, L"0");
    EXPECT_FALSE(pReader->Open()) << "there is no switch";
}

TEST_F(UrlReaderTLS, CertificateOfAnotherNameIsRefused)
{
    const ReaderPtr pReader = Make("localhost", s_pServer->GetCertificate());
    EXPECT_FALSE(pReader->Open());
    EXPECT_NE(GetInfo(*pReader, L"Error").find("cannot be trusted"), std::string::npos) << GetInfo(*pReader, L"Error");
}

TEST_F(UrlReaderTLS, MissingAuthorityFileIsTold)
{
    const ReaderPtr pReader = Make("127.0.0.1", s_pServer->GetFolder().GetPath("missing.pem"));
    EXPECT_FALSE(pReader->Open());
    EXPECT_NE(GetInfo(*pReader, L"Error").find("CA_FILE"), std::string::npos) << GetInfo(*pReader, L"Error");
}

TEST_F(UrlReaderTLS, PlainTextOnASecurePortIsAnError)
{
    std::string strURL = s_pServer->GetURL("/files/small.txt");
    strURL.erase(4, 1);
    const ReaderPtr pReader = MakeReader(strURL);
    EXPECT_FALSE(pReader->Open());
    EXPECT_EQ(GetInfo(*pReader, L"StatusCode"), "400");
}

TEST_F(UrlReaderTLS, SecureOnAPlainPortIsAnError)
{
    const NginxServer server;
    ASSERT_TRUE(server.GetIsRunning());
    const ReaderPtr pReader = MakeReader("https" + server.GetURL("/files/small.txt").substr(4));
    EXPECT_FALSE(pReader->Open());
    EXPECT_NE(GetInfo(*pReader, L"Error").find("https"), std::string::npos) << GetInfo(*pReader, L"Error");
}
