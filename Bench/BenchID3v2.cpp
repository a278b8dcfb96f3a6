// Reading a tag and writing it again: CID3v2Tag against TagLib's ID3v2::Tag, both in memory, and both from nothing each
// time, as a library of files is gone through.

#include "MP3Tag.h"
#include <attachedpictureframe.h>
#include <benchmark/benchmark.h>
#include <commentsframe.h>
#include <id3v2framefactory.h>
#include <id3v2tag.h>
#include <mpegfile.h>
#include <string>
#include <tbytevectorstream.h>
#include <textidentificationframe.h>

namespace
{
// The tag of an ordinary file: twenty texts, five of them with descriptions, a comment, and a picture of nPictureBytes.
TagLib::ByteVector MakeTag(int nPictureBytes, TagLib::ID3v2::Version eVersion)
{
    using namespace TagLib::ID3v2;
    Tag tag;
    const char* const aryIDs[] = {"TIT2", "TPE1", "TPE2", "TALB", "TRCK", "TPOS", "TCOM", "TSRC",
                                  "TBPM", "TKEY", "TPUB", "TCOP", "TENC", "TSSE", "TLAN"};
    for (const char* pID : aryIDs)
    {
        auto* pFrame = new TextIdentificationFrame(pID, TagLib::String::UTF16);
        pFrame->setText("The text of an ordinary field");
        tag.addFrame(pFrame);
    }
    for (int i = 0; i < 5; ++i)
        tag.addFrame(new UserTextIdentificationFrame("Description " + TagLib::String::number(i),
                                                     TagLib::StringList("The text of this field"),
                                                     TagLib::String::Latin1));
    auto* pComment = new CommentsFrame(TagLib::String::Latin1);
    pComment->setText("A comment of a few words, as people write them.");
    tag.addFrame(pComment);
    if (nPictureBytes > 0)
    {
        auto* pPicture = new AttachedPictureFrame;
        pPicture->setMimeType("image/jpeg");
        pPicture->setType(AttachedPictureFrame::FrontCover);
        std::string strImage(static_cast<size_t>(nPictureBytes), '\xD8');
        for (size_t i = 0; i < strImage.size(); ++i)
            strImage[i] = static_cast<char>(i * i / 7);
        pPicture->setPicture(TagLib::ByteVector(strImage.data(), static_cast<unsigned int>(strImage.size())));
        tag.addFrame(pPicture);
    }
    return tag.render(eVersion);
}

TagLib::ByteVector MakeTag(const benchmark::State& state)
{
    return MakeTag(static_cast<int>(state.range(0)), state.range(1) == 3 ? TagLib::ID3v2::v3 : TagLib::ID3v2::v4);
}

LyBuffer MakeBuffer(const benchmark::State& state)
{
    const TagLib::ByteVector bytes = MakeTag(state);
    LyBuffer buffer;
    (void)buffer.FromBuffer(bytes.data(), static_cast<int>(bytes.size()));
    return buffer;
}

// An object with its table of fields, and its end.
void OwnNew(benchmark::State& state)
{
    for (auto _ : state)
    {
        CID3v2Tag tag;
        benchmark::DoNotOptimize(tag.m_aryFields.GetData());
    }
}

void OwnParse(benchmark::State& state)
{
    const LyBuffer buffer = MakeBuffer(state);
    for (auto _ : state)
    {
        CID3v2Tag tag;
        benchmark::DoNotOptimize(tag.Load(buffer, 0));
    }
    state.SetBytesProcessed(state.iterations() * buffer.GetSize());
}

// Every value as a text, but for the picture, of which the type is asked.
void OwnParseAndRead(benchmark::State& state)
{
    const LyBuffer buffer = MakeBuffer(state);
    for (auto _ : state)
    {
        CID3v2Tag tag;
        benchmark::DoNotOptimize(tag.Load(buffer, 0));
        for (const CID3v2Frame* pFrame : tag.m_aryFrames)
        {
            const bool bPicture = pFrame->GetType() == ID3V2_FRAME_TYPE_PICTURE;
            const LyString strValue =
                pFrame->m_Properties.GetProperty(bPicture ? CID3v2Property::MIME_TYPE : CID3v2Property::VALUE);
            benchmark::DoNotOptimize(strValue.GetLength());
        }
    }
    state.SetBytesProcessed(state.iterations() * buffer.GetSize());
}

// The same object for every file: its rows are there already.
void OwnParseAgain(benchmark::State& state)
{
    const LyBuffer buffer = MakeBuffer(state);
    CID3v2Tag tag;
    for (auto _ : state)
        benchmark::DoNotOptimize(tag.Load(buffer, 0));
    state.SetBytesProcessed(state.iterations() * buffer.GetSize());
}

void OwnParseAndSave(benchmark::State& state)
{
    const LyBuffer buffer = MakeBuffer(state);
    for (auto _ : state)
    {
        CID3v2Tag tag;
        LyBuffer saved;
        benchmark::DoNotOptimize(tag.Load(buffer, 0));
        benchmark::DoNotOptimize(tag.SaveToBuffer(saved));
    }
    state.SetBytesProcessed(state.iterations() * buffer.GetSize());
}

void TagLibParse(benchmark::State& state)
{
    const TagLib::ByteVector bytes = MakeTag(state);
    TagLib::ByteVectorStream stream(bytes);
    TagLib::MPEG::File file(&stream, TagLib::ID3v2::FrameFactory::instance(), false);
    for (auto _ : state)
    {
        const TagLib::ID3v2::Tag tag(&file, 0);
        benchmark::DoNotOptimize(tag.frameList().size());
    }
    state.SetBytesProcessed(state.iterations() * bytes.size());
}

void TagLibParseAndRead(benchmark::State& state)
{
    const TagLib::ByteVector bytes = MakeTag(state);
    TagLib::ByteVectorStream stream(bytes);
    TagLib::MPEG::File file(&stream, TagLib::ID3v2::FrameFactory::instance(), false);
    for (auto _ : state)
    {
        const TagLib::ID3v2::Tag tag(&file, 0);
        for (const TagLib::ID3v2::Frame* pFrame : tag.frameList())
        {
            const auto* pPicture = dynamic_cast<const TagLib::ID3v2::AttachedPictureFrame*>(pFrame);
            const TagLib::String strValue = pPicture != nullptr ? pPicture->mimeType() : pFrame->toString();
            benchmark::DoNotOptimize(strValue.size());
        }
    }
    state.SetBytesProcessed(state.iterations() * bytes.size());
}

void TagLibParseAndSave(benchmark::State& state)
{
    const TagLib::ByteVector bytes = MakeTag(state);
    TagLib::ByteVectorStream stream(bytes);
    TagLib::MPEG::File file(&stream, TagLib::ID3v2::FrameFactory::instance(), false);
    const auto eVersion = state.range(1) == 3 ? TagLib::ID3v2::v3 : TagLib::ID3v2::v4;
    for (auto _ : state)
    {
        const TagLib::ID3v2::Tag tag(&file, 0);
        benchmark::DoNotOptimize(tag.render(eVersion).size());
    }
    state.SetBytesProcessed(state.iterations() * bytes.size());
}

void Sizes(benchmark::internal::Benchmark* pBenchmark)
{
    pBenchmark->ArgNames({"picture", "version"});
    for (const int nPictureBytes : {0, 30'000, 300'000})
    {
        for (const int nVersion : {3, 4})
            pBenchmark->Args({nPictureBytes, nVersion});
    }
}
} // namespace

BENCHMARK(OwnNew)->Name("CID3v2Tag/new");
BENCHMARK(OwnParse)->Name("CID3v2Tag/parse")->Apply(Sizes);
BENCHMARK(TagLibParse)->Name("TagLib/parse")->Apply(Sizes);
BENCHMARK(OwnParseAndRead)->Name("CID3v2Tag/parseAndRead")->Apply(Sizes);
BENCHMARK(TagLibParseAndRead)->Name("TagLib/parseAndRead")->Apply(Sizes);
BENCHMARK(OwnParseAgain)->Name("CID3v2Tag/parseAgain")->Apply(Sizes);
BENCHMARK(OwnParseAndSave)->Name("CID3v2Tag/parseAndSave")->Apply(Sizes);
BENCHMARK(TagLibParseAndSave)->Name("TagLib/parseAndSave")->Apply(Sizes);
