// How the report looks: on a wide screen, on a phone, in the dark and on paper.
#pragma once

namespace trevolt {

/// A narrow screen shows each row as a card. Its elements then keep their parts of a table for who
/// hears the page by the roles that they have.
inline constexpr const char* kReportStyle = R"css(
:root{color-scheme:light dark;--page:#f4f5f3;--card:#fff;--ink:#1d2321;--soft:#56605c;--line:#d5dad7;
--head:#e9edea;--link:#0b5c8a;--good:#1b6535;--goodback:#dff3e4;--bad:#a3161f;--badback:#fde5e3;
--mild:#6b5200;--mildback:#fbf0cf;--mark:#fff3c4}
@media (prefers-color-scheme:dark){:root{--page:#141816;--card:#1c211f;--ink:#e7ebe8;--soft:#a2aca7;
--line:#36403b;--head:#262d2a;--link:#7cc4ee;--good:#8fdca6;--goodback:#173524;--bad:#ffa8a0;
--badback:#47191b;--mild:#edcf7c;--mildback:#3b300f;--mark:#3d3714}}
*{box-sizing:border-box}
html{font:100%/1.45 system-ui,"Segoe UI",Roboto,"Noto Sans","DejaVu Sans",sans-serif;
background:var(--page);color:var(--ink);-webkit-text-size-adjust:100%;text-size-adjust:100%}
body{margin:0 auto;max-width:92rem;padding:1.5rem clamp(1rem,3vw,2.5rem) 3rem}
h1{font-size:1.75rem;line-height:1.2;margin:0 0 .5rem}
h2{font-size:1.25rem;line-height:1.2;margin:2.25rem 0 .75rem}
a{color:var(--link)}
:focus-visible{outline:3px solid var(--link);outline-offset:2px;border-radius:2px}
.skip{position:absolute;left:-99rem;top:.5rem;padding:.6rem 1rem;background:var(--card);
border:1px solid var(--line);z-index:2}
.skip:focus{left:.5rem}
.verdict{font-size:1.15rem;margin:0 0 1rem;padding:.7rem 1rem;border-left:.4rem solid;border-radius:.25rem}
.good{color:var(--good);background:var(--goodback)}
.bad{color:var(--bad);background:var(--badback)}
.mild{color:var(--mild);background:var(--mildback)}
nav ul:not(.jump){list-style:none;display:flex;flex-wrap:wrap;gap:.35rem 1.25rem;margin:0;padding:0}
nav ul:not(.jump) a{display:inline-block;padding:.3rem 0}
.counts{display:grid;grid-template-columns:repeat(auto-fill,minmax(8rem,1fr));gap:.75rem;margin:0 0 .75rem}
.tile{background:var(--card);border:1px solid var(--line);border-radius:.5rem;padding:.6rem .9rem;
display:flex;flex-direction:column-reverse}
.tile dt{color:var(--soft)}
.tile.bad{background:var(--badback);border-color:var(--bad)}
.tile.bad dt{color:inherit}
.tile dd{margin:0;font-size:1.75rem;line-height:1.15;font-variant-numeric:tabular-nums}
.facts{background:var(--card);border:1px solid var(--line);border-radius:.5rem;margin:0;padding:.35rem .9rem}
.facts div{display:grid;grid-template-columns:10rem 1fr;gap:0 1rem;padding:.3rem 0}
.facts div+div{border-top:1px solid var(--line)}
.facts dt{color:var(--soft)}
.facts dd{margin:0;overflow-wrap:anywhere;white-space:pre-wrap}
.jump{margin:0 0 1rem;padding-left:1.25rem}
.jump li{overflow-wrap:anywhere}
bdi,.passed li{white-space:pre-wrap;overflow-wrap:anywhere}
.scale{display:inline-block;width:6rem;height:.8rem;vertical-align:-.05rem;border-radius:.15rem;
border:1px solid var(--line)}
table{width:100%;border-collapse:collapse;table-layout:fixed;background:var(--card);
border:1px solid var(--line);font-size:.9rem}
caption{text-align:left;color:var(--soft);padding:0 0 .5rem}
th,td{padding:.6rem .65rem;vertical-align:top;text-align:left;border-top:1px solid var(--line);
overflow-wrap:anywhere}
thead th{position:sticky;top:0;z-index:1;background:var(--head);font-weight:600;border-top:0;
overflow-wrap:normal}
tbody th{font-weight:400}
tbody tr{scroll-margin-top:3rem}
tr:target{background:var(--mark)}
.file{width:17%}.map{width:9.6rem}.turn{width:4.5rem}.time{width:6.6rem}.sum{width:15rem}
.number{color:var(--soft);font-variant-numeric:tabular-nums}
.name{font-weight:600}
.output,.more{display:block;color:var(--soft)}
img{display:block;max-width:100%;height:auto;margin-bottom:.3rem;image-rendering:pixelated;
border:1px solid var(--line)}
.badge{display:inline-block;padding:.1rem .55rem;border-radius:1rem;font-weight:600}
td ul{margin:.4rem 0 0;padding-left:1.1rem}
td dl{margin:0}
td dt{color:var(--soft)}
td dd{margin:0 0 .3rem;font:.72rem/1.35 ui-monospace,"DejaVu Sans Mono",Consolas,monospace;
overflow-wrap:anywhere}
time,.size{font-variant-numeric:tabular-nums}
footer{margin-top:2.5rem;color:var(--soft);font-size:.9rem}
@media screen and (max-width:68rem){
.sum{width:auto}
table,caption,tbody,tr,th,td{display:block}
table{border:0;background:none}
thead{position:absolute;width:1px;height:1px;overflow:hidden;clip-path:inset(50%)}
tbody tr{display:grid;grid-template-columns:1fr 1fr;gap:.5rem 1rem;background:var(--card);
border:1px solid var(--line);border-radius:.5rem;padding:.75rem .9rem;margin-bottom:.75rem;
scroll-margin-top:.5rem}
tbody th,tbody td{padding:0;border:0;min-width:0}
tbody th,td.state,td.sums{grid-column:1/-1}
td::before{content:attr(data-is);display:block;color:var(--soft);font-size:.8rem}
td.state::before{content:none}
td dd{font-size:.8rem}}
@media screen and (max-width:40rem){
.facts div{grid-template-columns:1fr}}
@media screen and (min-width:40rem) and (max-width:68rem){
tbody tr{grid-template-columns:repeat(4,1fr)}}
@media print{
:root{--page:#fff;--card:#fff;--ink:#000;--soft:#444;--line:#999;--head:#eee;--mark:#fff}
@page{size:A4 landscape;margin:12mm}
html{font-size:70%}
body{max-width:none;padding:0}
.skip,nav:not([aria-label^="F"]){display:none}
thead{display:table-header-group}
thead th{position:static}
tr,.tile,.facts div{break-inside:avoid}
h2,caption{break-after:avoid}
a{color:inherit;text-decoration:none}
.badge,.verdict,img,.scale{print-color-adjust:exact;-webkit-print-color-adjust:exact}}
)css";

} // namespace trevolt
