// The style of the HTML report. Both sets of colours have a contrast of 4.5 to 1 at least for every text on every
// ground that it stands on, and of 3 to 1 for what a chart draws (WCAG 2.1, 1.4.3 and 1.4.11).

#include "ReportHtmlParts.h"

namespace ReportHtml
{
const char* const STYLE = R"css(
:root {
  color-scheme: light dark;
  --paper: #f6f6f3; --card: #ffffff; --plot: #fbfbf9; --ink: #1b2126; --soft: #58626a; --line: #d9dcd8; --edge: #b9bfba;
  --accent: #0b6168; --wave: #3d7f86; --area: #a9c6c9; --bad: #b3231b; --again: #85560a; --good: #1d6b3a;
}
@media (prefers-color-scheme: dark) {
  :root {
    --paper: #121618; --card: #1a2023; --plot: #151a1c; --ink: #e6eaec; --soft: #a3aeb5; --line: #2e363a; --edge: #4a555b;
    --accent: #6fc7cf; --wave: #5aa7af; --area: #2f5458; --bad: #ff8d83; --again: #efb657; --good: #7fd29b;
  }
}
* { box-sizing: border-box; }
html { -webkit-text-size-adjust: 100%; text-size-adjust: 100%; }
body {
  margin: 0 auto; padding: 1.75rem 1.5rem 3rem; max-width: 74rem; background: var(--paper); color: var(--ink);
  font: 15px/1.5 system-ui, "Segoe UI", "Helvetica Neue", "DejaVu Sans", Arial, sans-serif;
  font-variant-numeric: tabular-nums lining-nums;
}
h1, h2, h3, p, dl, dd, ul, figure { margin: 0; padding: 0; }
h1 { font-size: 1.9rem; line-height: 1.2; font-weight: 600; overflow-wrap: anywhere; }
h2 { font-size: 1.15rem; font-weight: 600; margin-bottom: .75rem; }
h3 { font-size: 1rem; font-weight: 600; }
small { font-size: .82em; color: var(--soft); font-weight: 400; }
code, .sum { font-family: ui-monospace, "Cascadia Mono", "DejaVu Sans Mono", Menlo, Consolas, monospace; font-size: .88em; }
code { overflow-wrap: anywhere; }
a { color: var(--accent); text-underline-offset: .15em; }
:focus { outline: none; }
:focus-visible { outline: 3px solid var(--accent); outline-offset: 2px; border-radius: 3px; }
.skip { position: absolute; left: -100vw; top: 0; padding: .6rem 1rem; background: var(--ink); color: var(--paper); z-index: 1; }
.skip:focus { left: .5rem; top: .5rem; }
.symbols { position: absolute; }
.none { color: var(--soft); margin: .5rem 0; }
section { margin-top: 2rem; }

header .kind { color: var(--soft); font-size: .8rem; letter-spacing: .08em; text-transform: uppercase; }
header .by { font-size: 1.1rem; color: var(--soft); overflow-wrap: anywhere; }

.verdict {
  margin-top: 1.25rem; display: flex; gap: 1.1rem; align-items: flex-start; background: var(--card); padding: 1.1rem 1.3rem;
  border: 1px solid var(--edge); border-left: 6px solid var(--tone); border-radius: 4px; --tone: var(--bad);
}
.verdict.good { --tone: var(--good); }
.verdict.stopped { --tone: var(--again); }
.verdict h2 { color: var(--tone); font-size: 1.5rem; line-height: 1.3; margin: 0; }
.verdict p { overflow-wrap: anywhere; }
.sign { flex: none; fill: none; stroke: var(--tone); stroke-width: 3; stroke-linecap: round; stroke-linejoin: round; }
.figures { display: flex; flex-wrap: wrap; gap: 1px; margin-top: 1rem;
  background: var(--edge); border: 1px solid var(--edge); border-radius: 4px; overflow: hidden; }
.figures div { flex: 1 1 8.2rem; background: var(--card); padding: .55rem .9rem .6rem; }
.figures dt { color: var(--soft); font-size: .82rem; }
.figures dd { font-size: 1.3rem; line-height: 1.3; white-space: nowrap; }
.figures small { font-size: .8rem; }

.facts { display: grid; grid-template-columns: repeat(auto-fit, minmax(19rem, 1fr)); gap: .5rem 2rem; }
.facts h2 { grid-column: 1 / -1; margin-bottom: 0; }
.group h3 { color: var(--soft); font-size: .85rem; border-bottom: 1px solid var(--edge); padding-bottom: .2rem; margin-bottom: .4rem; }
.group dl { display: grid; grid-template-columns: 8.2rem 1fr; gap: .15rem .8rem; }
dt { color: var(--soft); }
.group dd { overflow-wrap: anywhere; }
.notes ul { padding-left: 1.2rem; }

.scroll { overflow-x: auto; background: var(--card); border: 1px solid var(--edge); border-radius: 4px; margin-bottom: 1rem; }
table { border-collapse: collapse; width: 100%; }
th, td { padding: .38rem .6rem; text-align: left; white-space: nowrap; vertical-align: middle; }
thead th { color: var(--soft); font-size: .82rem; line-height: 1.25; font-weight: 600; vertical-align: bottom; border-bottom: 1px solid var(--edge); }
tbody th { font-weight: 600; }
tbody tr + tr > * { border-top: 1px solid var(--line); }
caption { text-align: left; padding: .5rem .7rem; font-weight: 600; }
.hidden { position: absolute; clip-path: inset(50%); width: 1px; height: 1px; overflow: hidden; }
.n { text-align: right; }
td.title, th.title { white-space: normal; min-width: 9rem; overflow-wrap: anywhere; }
.picture { padding-block: .15rem; }
.files th, .files td:nth-child(2) { white-space: normal; overflow-wrap: anywhere; min-width: 12rem; font-weight: 400; }
.files td.sum { white-space: normal; min-width: 18rem; }
.error { color: var(--bad); }
.state { display: inline-block; padding: 0 .5rem; font-size: .85rem; line-height: 1.45; border: 1px solid; border-radius: 3px; color: var(--soft); white-space: nowrap; }
.state.good { color: var(--good); }
.state.doubt, .state.failed { color: var(--bad); border-style: double; border-width: 3px; line-height: 1.2; font-weight: 600; }
.state.open { color: var(--again); border-style: dashed; }

details.track { background: var(--card); border: 1px solid var(--edge); border-radius: 4px; margin-top: .9rem; scroll-margin-top: .5rem; }
summary { cursor: pointer; }
.track > summary { display: flex; flex-wrap: wrap; align-items: baseline; gap: .2rem 1rem; padding: .6rem 1rem; list-style: none; }
.track > summary::-webkit-details-marker { display: none; }
.track > summary::before { content: ""; align-self: center; border: .33rem solid transparent; border-left: .5rem solid var(--soft); border-right: 0; }
.track[open] > summary::before { border: .33rem solid transparent; border-top: .5rem solid var(--soft); border-bottom: 0; }
.track > summary h3 { flex: 1 1 12rem; overflow-wrap: anywhere; }
.name { font-weight: 400; margin-left: .5rem; }
.body { padding: .3rem 1rem 1rem; border-top: 1px solid var(--line); }
.body > :last-child { margin-bottom: 0; }
.inline { display: flex; flex-wrap: wrap; gap: .5rem 2rem; margin: .9rem 0; }
.inline dt { font-size: .82rem; }
.inline dd { overflow-wrap: anywhere; }
.list { margin: .5rem 0; }
.list > summary { padding: .2rem 0; margin-bottom: .4rem; font-weight: 600; }

figure { margin-top: .7rem; }
figcaption { display: flex; flex-wrap: wrap; gap: .1rem 1.2rem; align-items: baseline; margin-bottom: .35rem; }
.cap { font-weight: 600; }
.legend { display: flex; flex-wrap: wrap; gap: .1rem 1.1rem; list-style: none; font-size: .85rem; color: var(--soft); }
.at { font-size: .85rem; margin-left: auto; }
.key { overflow: visible; vertical-align: -1px; margin-right: .4rem; }
.chart { display: block; width: calc(100% - 3.6rem); margin: 0 .9rem 0 2.7rem; overflow: visible; }
.chart text { font-size: 11px; fill: var(--soft); }
.frame { fill: var(--plot); stroke: var(--edge); }
.grid, line.track { stroke: var(--line); shape-rendering: crispEdges; }
line.track { stroke: var(--edge); }
.y { text-anchor: end; }
.x { text-anchor: middle; }
.wave, .momentary, .shortterm, .band, .line { vector-effect: non-scaling-stroke; }
.wave { fill: var(--wave); stroke: var(--wave); stroke-width: .8; }
.momentary { fill: var(--area); stroke: var(--wave); stroke-width: .6; }
.shortterm { fill: none; stroke: var(--ink); stroke-width: 1.6; stroke-linejoin: round; }
.integrated, .average { fill: none; stroke: var(--accent); stroke-width: 2; stroke-dasharray: 8 4; }
.band { fill: var(--area); stroke: none; }
.line { fill: none; stroke: var(--wave); stroke-width: 1.4; }
.speed rect { fill: var(--area); }
.speed path { stroke: var(--wave); stroke-width: 1.4; }
.bad, .again { fill: none; stroke-width: 2.2; }
.bad { stroke: var(--bad); }
.again { stroke: var(--again); stroke-width: 1.8; }
.bad rect { fill: var(--bad); fill-opacity: .25; stroke-width: 1; }
.again rect { fill: var(--again); fill-opacity: .1; stroke-width: 1; stroke-dasharray: 3 3; }
.thumb { display: block; width: 9.5rem; height: 2.1rem; overflow: visible; }
.thumb path { vector-effect: non-scaling-stroke; stroke-width: 1.6; }
.cursor { stroke: var(--ink); }
footer { margin-top: 2.5rem; color: var(--soft); font-size: .85rem; }

@media (max-width: 40rem) {
  body { padding: 1rem .75rem 2rem; }
  .odd { display: none; }
  .verdict { padding: .9rem; gap: .7rem; }
  .facts { grid-template-columns: 1fr; }
  .group dl { grid-template-columns: 6.6rem 1fr; }
  .body { padding: .3rem .7rem .8rem; }
  .at { margin-left: 0; width: 100%; }
}
@media print {
  body { max-width: none; padding: 0; font-size: 9.5pt; -webkit-print-color-adjust: exact; print-color-adjust: exact; }
  .skip, .at, .cursor { display: none; }
  .scroll { overflow: visible; }
  .track::details-content, .list::details-content { content-visibility: visible; }
  figure, .verdict, .figures, .group, tr { break-inside: avoid; }
  h2, summary { break-after: avoid; }
  thead { display: table-header-group; }
  th, td { padding: .2rem .35rem; white-space: normal; }
  .thumb { width: 6rem; }
}
)css";
} // namespace ReportHtml
