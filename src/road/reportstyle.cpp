#include "road/reportstyle.h"

namespace tessera {

// The colours of words and curves have a contrast of at least 4.5 to the background in both palettes.
const char* const g_pszReportStyle = R"(
:root { color-scheme: light dark;
  --ground: #ffffff; --text: #1d2329; --faint: #5b6670; --line: #d5dbe0; --panel: #f4f6f8;
  --good: #17693a; --doubtful: #8a5300; --bad: #b3261e;
  --s0: #1b5fa8; --s1: #b3430e; --s2: #17693a; --s3: #7a3f9d; }
@media (prefers-color-scheme: dark) { :root {
  --ground: #14181c; --text: #e4e9ed; --faint: #a0abb4; --line: #3a444d; --panel: #1e242a;
  --good: #6fcf97; --doubtful: #f2b457; --bad: #ff8a80;
  --s0: #7ab8ff; --s1: #ff9f6b; --s2: #6fcf97; --s3: #d3a4f0; } }
* { box-sizing: border-box; }
body { margin: 0 auto; padding: 1.5rem 1rem 3rem; max-width: 76rem; background: var(--ground);
  color: var(--text); font: 1rem/1.5 system-ui, sans-serif; overflow-wrap: break-word; }
h1 { font-size: 1.7rem; line-height: 1.25; margin: 0 0 .25rem; }
h2 { font-size: 1.25rem; margin: 2.2rem 0 .6rem; padding-bottom: .25rem;
  border-bottom: 1px solid var(--line); }
h3 { font-size: 1rem; margin: 1.3rem 0 .3rem; }
p { margin: .4rem 0; }
.faint, figcaption, caption { color: var(--faint); font-size: .875rem; }
caption { text-align: left; padding-bottom: .25rem; }
.scroll { overflow-x: auto; margin: .6rem 0; }
table { border-collapse: collapse; font-size: .9rem; font-variant-numeric: tabular-nums; }
th, td { text-align: left; vertical-align: top; padding: .25rem .9rem .25rem 0;
  border-bottom: 1px solid var(--line); }
th { font-weight: 600; white-space: nowrap; }
td { overflow-wrap: normal; }
.scroll td:first-child { white-space: nowrap; }
.number { text-align: right; white-space: nowrap; }
tr.whole td { font-weight: 600; border-bottom: 0; }
.good { color: var(--good); font-weight: 600; }
.doubtful { color: var(--doubtful); font-weight: 600; }
.bad { color: var(--bad); font-weight: 600; }
dl { display: grid; grid-template-columns: max-content 1fr; gap: .2rem 1.2rem; margin: .8rem 0; }
dt { color: var(--faint); }
dd { margin: 0; }
.row { display: grid; gap: 1.2rem; grid-template-columns: repeat(auto-fit, minmax(min(100%, 30rem), 1fr)); }
.row.frames { grid-template-columns: repeat(auto-fit, minmax(min(100%, 20rem), 1fr)); }
figure { margin: 0; min-width: 0; }
svg { display: block; width: 100%; height: auto; }
figure.plot { max-width: 44rem; } figure.plot h3 { margin: 0; }
.row + .row, .scroll + .row { margin-top: 1.4rem; }
svg .axis { fill: var(--faint); }
svg .grid { stroke: var(--line); }
svg .series { fill: none; stroke-width: 1.6; stroke-linejoin: round; }
svg .points { stroke: none; }
svg .series.s0 { stroke: var(--s0); } svg .points.s0 { fill: var(--s0); }
svg .series.s1 { stroke: var(--s1); } svg .points.s1 { fill: var(--s1); }
svg .series.s2 { stroke: var(--s2); } svg .points.s2 { fill: var(--s2); }
svg .series.s3 { stroke: var(--s3); } svg .points.s3 { fill: var(--s3); }
svg .peaks { stroke: #ffb300; fill: none; }
svg .beam { stroke: #29b6f6; fill: none; }
pre { white-space: pre-wrap; overflow-wrap: anywhere; background: var(--panel); padding: .8rem;
  border-radius: .3rem; font-size: .875rem; }
summary { cursor: pointer; color: var(--faint); }
@media (max-width: 34rem) { dl { grid-template-columns: 1fr; gap: 0; } dd { margin-bottom: .5rem; }
  figure.plot text { font-size: 17px; } }
@media print { :root { --ground: #ffffff; --text: #000000; --faint: #444444; --line: #bbbbbb;
    --panel: #ffffff; --good: #17693a; --doubtful: #8a5300; --bad: #b3261e;
    --s0: #1b5fa8; --s1: #b3430e; --s2: #17693a; --s3: #7a3f9d; }
  body { max-width: none; padding: 0; font-size: 10pt; }
  figure, tr { break-inside: avoid; } h2, h3 { break-after: avoid; }
  .scroll { overflow: visible; } .row { grid-template-columns: 1fr 1fr; }
  .row.frames { grid-template-columns: 1fr 1fr 1fr; } }
)";

}  // namespace tessera
