// What it costs to record every command: the disc service's way to a drive that does nothing, against the drive alone,
// and the recording by itself against the clock reads that it cannot do without.

#include "DiscManager.h"
#include "MMC.h"
#include <benchmark/benchmark.h>
#include <chrono>

namespace
{
constexpr const wchar_t* PATH = L"/bench/drive";

class IdleDrive final : public ServiceDrive
{
public:
    bool Load(std::string&) override { return true; }
    bool Acquire(std::string&) override { return true; }
    void Release() override {}
    bool Send(const DRIVE_COMMAND& command, SENSE_DATA&) override
    {
        benchmark::DoNotOptimize(command.m_pCDB);
        return true;
    }
    std::string GetReadErrorText() override { return {}; }
    std::string GetWarnings() override { return {}; }
    DRIVE_DESCRIPTION GetDescription() override { return {}; }
    void AddUser(int) override {}
    void RemoveUser(int) override {}
    unsigned char GetStateA() override { return 1; }
    wchar_t* GetVendor() override { return nullptr; }
    wchar_t* GetModel() override { return nullptr; }
    unsigned char GetStateB() override { return 1; }
    wchar_t* GetPackedCapabilities() override { return nullptr; }
};

unsigned char s_aryCDB[12] = {CDB_READ_CD, READ_CD_TYPE_CDDA, 0, 0, 1, 0, 0, 0, 27, READ_CD_USER_DATA, 0, 0};

void SendThroughTheService(benchmark::State& state)
{
    DiscManager manager(
        nullptr, [](const std::string&, std::string&) { return std::make_unique<IdleDrive>(); },
        [] { return LETTER_IMAGES(); });
    benchmark::DoNotOptimize(manager.GetDrive(PATH));
    unsigned char arySense[SENSE_BYTES];
    int nBytes = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(manager.SendCommand(PATH, s_aryCDB, sizeof s_aryCDB, nullptr, nBytes,
                                                     DRIVE_TRANSFER_IN, 1000, arySense, SENSE_BYTES));
}
BENCHMARK(SendThroughTheService);

void SendToTheDrive(benchmark::State& state)
{
    IdleDrive drive;
    ServiceDrive* pDrive = &drive;
    SENSE_DATA sense;
    int nBytes = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(
            pDrive->Send({s_aryCDB, sizeof s_aryCDB, nullptr, nBytes, DRIVE_TRANSFER_IN, 1000}, sense));
}
BENCHMARK(SendToTheDrive);

void RecordOne(benchmark::State& state)
{
    Evidence evidence;
    const SENSE_DATA sense;
    int nBytes = 0;
    for (auto _ : state)
        evidence.Record(1, EVIDENCE_START::Now(), {s_aryCDB, sizeof s_aryCDB, nullptr, nBytes, DRIVE_TRANSFER_IN, 1000},
                        true, sense);
}
BENCHMARK(RecordOne);

void ReadTheClocks(benchmark::State& state)
{
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(EVIDENCE_START::Now());
        benchmark::DoNotOptimize(std::chrono::steady_clock::now());
    }
}
BENCHMARK(ReadTheClocks);

void ReadAThousandRecords(benchmark::State& state)
{
    Evidence evidence;
    const SENSE_DATA sense;
    int nBytes = 0;
    for (unsigned int i = 0; i < Evidence::RECORDS; ++i)
        evidence.Record(1, EVIDENCE_START::Now(), {s_aryCDB, sizeof s_aryCDB, nullptr, nBytes, DRIVE_TRANSFER_IN, 1000},
                        true, sense);
    std::vector<DISC_EVIDENCE> aryRecords(1000);
    for (auto _ : state)
        benchmark::DoNotOptimize(evidence.Read(1, 0, aryRecords.data(), 1000));
}
BENCHMARK(ReadAThousandRecords);
} // namespace
