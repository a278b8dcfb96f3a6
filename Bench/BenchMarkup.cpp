// Parsing a document of about 100 KB and walking it: CMarkup against pugixml. Both are given the text in memory, as
// each of them wants it, and copy it; both then read the name of every element, one attribute and the text.

#include "Markup.h"
#include <benchmark/benchmark.h>
#include <pugixml.hpp>
#include <string>

namespace
{
constexpr int ALBUMS = 40;
constexpr int TRACKS = 25;

std::string MakeDocument()
{
    std::string str = "<?xml version=\"1.0\"?>\r\n<Library version=\"1.0\">\r\n";
    for (int nAlbum = 0; nAlbum < ALBUMS; ++nAlbum)
    {
        str += "<Album Name=\"Album number " + std::to_string(nAlbum) + "\">\r\n";
        for (int nTrack = 0; nTrack < TRACKS; ++nTrack)
            str += "<Track Name=\"Track " + std::to_string(nTrack) + "\" Length=\"" + std::to_string(1000 * nTrack) +
                   "\">The name of the track &amp; of its singer, at length " + std::to_string(nTrack) + "</Track>\r\n";
        str += "</Album>\r\n";
    }
    return str + "</Library>\r\n";
}

std::wstring Widen(const std::string& str) { return {str.begin(), str.end()}; }

int Walk(CMarkup& markup)
{
    int nRead = 0;
    while (markup.FindElem())
    {
        nRead += markup.GetTagName().GetLength() + markup.GetAttrib(L"Name").GetLength() + markup.GetData().GetLength();
        (void)markup.IntoElem(); // there is an element to step into
        nRead += Walk(markup);
        (void)markup.OutOfElem();
    }
    return nRead;
}

size_t Walk(const pugi::xml_node& parent)
{
    size_t nRead = 0;
    for (pugi::xml_node node = parent.first_child(); node; node = node.next_sibling())
    {
        if (node.type() != pugi::node_element)
            continue;
        nRead += std::string(node.name()).size() + std::string(node.attribute("Name").value()).size() +
                 std::string(node.text().get()).size();
        nRead += Walk(node);
    }
    return nRead;
}

void Parse_Markup(benchmark::State& state)
{
    const std::wstring strText = Widen(MakeDocument());
    for (auto _ : state)
    {
        CMarkup markup;
        benchmark::DoNotOptimize(markup.SetDoc(strText.c_str()));
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(strText.size()));
}

void Parse_pugixml(benchmark::State& state)
{
    const std::string strText = MakeDocument();
    for (auto _ : state)
    {
        pugi::xml_document document;
        benchmark::DoNotOptimize(document.load_buffer(strText.data(), strText.size()).status);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(strText.size()));
}

void Walk_Markup(benchmark::State& state)
{
    const std::wstring strText = Widen(MakeDocument());
    CMarkup markup(strText.c_str());
    for (auto _ : state)
    {
        markup.m_nParentPos = markup.m_nMainPos = markup.m_nChildPos = 0;
        benchmark::DoNotOptimize(Walk(markup));
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(strText.size()));
}

void Walk_pugixml(benchmark::State& state)
{
    const std::string strText = MakeDocument();
    pugi::xml_document document;
    document.load_buffer(strText.data(), strText.size());
    for (auto _ : state)
        benchmark::DoNotOptimize(Walk(document));
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(strText.size()));
}

BENCHMARK(Parse_Markup);
BENCHMARK(Parse_pugixml);
BENCHMARK(Walk_Markup);
BENCHMARK(Walk_pugixml);
} // namespace
