// How the pages of quarn report look, on light and dark screens and on paper.
#pragma once

namespace tool {

constexpr const char* report_style = R"(
:root{color-scheme:light dark;--page:#f6f8fa;--card:#fff;--text:#1b2530;--soft:#556272;--line:#d8dfe7;--track:#e6ebf1;
--bar:#2f6fb3;--decision:#12805c;--function:#5b6b7f;--seen:#b34700;--before:#1b2530}
@media (prefers-color-scheme:dark){:root{--page:#0f1317;--card:#1a2027;--text:#e7ecf3;--soft:#b1bcc9;--line:#333e4a;
--track:#343e4a;--bar:#6aaae6;--decision:#45bf95;--function:#9fb0c3;--seen:#f28b3c;--before:#fff}}
*{box-sizing:border-box}
body{margin:0;background:var(--page);color:var(--text);font:15px/1.5 Helvetica,Arial,"Liberation Sans",sans-serif;
overflow-wrap:anywhere}
header,main{max-width:1180px;margin:0 auto;padding:0 24px}
header{padding-top:32px}
h1{margin:0;font-size:30px;line-height:1.2}
h2{margin:40px 0 12px;font-size:20px}
h3{margin:24px 0 10px;font-size:14px;color:var(--soft);font-weight:600}
p{margin:6px 0 12px;max-width:75ch}
.soft,.name,figcaption{color:var(--soft)}
.name{font-weight:normal;font-size:12px;overflow-wrap:anywhere}
.facts{display:flex;flex-wrap:wrap;gap:12px;margin:12px 0}
.facts div{background:var(--card);border:1px solid var(--line);border-radius:8px;padding:10px 16px;min-width:130px;
max-width:100%}
.facts dt{font-size:12px;color:var(--soft)}
.facts dd{margin:2px 0 0;font-size:18px;font-variant-numeric:tabular-nums}
.facts dd.list{font-size:14px}
.facts .seen{border-left:4px solid var(--seen)}
figure{margin:0;background:var(--card);border:1px solid var(--line);border-radius:8px}
.scroll{overflow-x:auto}
figure .scroll{padding:8px}
figure .scroll:focus-visible{outline:3px solid var(--bar)}
figure svg{display:block;margin:0 auto;max-width:100%;height:auto}
figure .quarn .page{fill:none}
figcaption{padding:0 16px 12px;font-size:13px}
.cards{display:grid;grid-template-columns:repeat(auto-fill,minmax(min(265px,100%),1fr));gap:14px;align-items:start}
table{border-collapse:collapse;font-size:13px;font-variant-numeric:tabular-nums}
caption{text-align:left;font-weight:bold;padding-bottom:6px}
th,td{padding:2px 8px 2px 0;text-align:left;vertical-align:middle}
th{font-weight:normal}
.card{break-inside:avoid;background:var(--card);border:1px solid var(--line);border-radius:8px;padding:10px 12px}
.card.seen{border-left:4px solid var(--seen)}
.card table{width:100%}
.card caption{font-size:14px;line-height:1.3}
.card th{width:38%;max-width:150px}
.card .number{width:1%;white-space:nowrap}
.number{text-align:right;padding-right:0}
.number+.number{padding-left:12px}
.moved{float:right;font-weight:normal;font-size:12px;color:var(--soft);padding-left:8px}
.bar{display:block;position:relative;height:10px;min-width:50px;background:var(--track);border-radius:2px}
.bar i{position:absolute;inset:0 auto 0 0;background:var(--bar);border-radius:2px}
.decision .bar i{background:var(--decision)}.function .bar i{background:var(--function)}.seen .bar i{background:var(--seen)}
.bar b{position:absolute;top:-2px;bottom:-2px;width:2px;margin-left:-1px;background:var(--before)}
.chosen{font-weight:bold}
.sheet{background:var(--card);border:1px solid var(--line);border-radius:8px;padding:12px 0 12px 16px;margin:0 0 14px;
width:fit-content;max-width:100%;overflow-x:auto;overflow-wrap:normal}
.sheet caption{white-space:nowrap;padding-right:16px}
.sheet th,.sheet td{padding:4px 18px 4px 0;border-top:1px solid var(--line)}
.sheet thead th{border:0;color:var(--soft);font-size:12px;vertical-align:bottom}
.sheet .number,.sheet thead .number{padding-right:18px;text-align:right}
.hidden{position:absolute;width:1px;height:1px;overflow:hidden;clip-path:inset(50%);white-space:nowrap}
.notes li{margin:4px 0}
footer{padding:40px 24px;text-align:center;font-size:12px;color:var(--soft)}
@media print{:root{--page:#fff}body{font-size:11pt}header,main{max-width:none;padding:0}.card,.sheet,figure,tr,p{break-inside:avoid}
.bar,.bar i,.bar b,svg{print-color-adjust:exact;-webkit-print-color-adjust:exact}figure svg{min-width:0!important;max-height:80vh}h2,h3,.soft{break-after:avoid}
.sheet{overflow:visible;overflow-wrap:anywhere}}
)";

}  // namespace tool
