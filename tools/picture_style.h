// The colours and fonts of pictures.
#pragma once

namespace tool {

// Whatever is drawn is in an element of class quarn. Evidence has a colour of its own, and so has each sort of node; all can be
// told apart by people who see fewer colours, and by their shapes.
constexpr const char* picture_style = R"(
.quarn text{font-family:Helvetica,Arial,"Liberation Sans",sans-serif;font-size:11px;fill:#1b2530}
.quarn .page{fill:#fff}
.quarn .body{fill:#fff}
.quarn .outline,.quarn .side{fill:none;stroke:#7c8a99;stroke-width:1.2}
.quarn .chance .head{fill:#e1edf8}.quarn .continuous .head{fill:#e6e8fb}.quarn .decision .head{fill:#d9f0e6}
.quarn .utility .head{fill:#f5e4f2}.quarn .function .head{fill:#e9edf1}
.quarn .chance .bar{fill:#2f6fb3}.quarn .decision .bar{fill:#12805c}.quarn .function .bar{fill:#5b6b7f}
.quarn .icon{fill:none;stroke:#3b4754;stroke-width:1.5}
.quarn .sign{font-size:13px;font-style:italic;font-weight:bold;fill:#3b4754}
.quarn .title{font-size:13px;font-weight:bold}
.quarn .name,.quarn .beside{font-size:10px;fill:#556272}
.quarn .track{fill:#e6ebf1}
.quarn .seen{font-weight:bold}
.quarn .number{font-size:15px;font-weight:bold}
.quarn .missing{font-style:italic;fill:#556272}
.quarn .axis{fill:none;stroke:#8b98a7;stroke-width:1}
.quarn .bell{fill:none;stroke:#4d5bbf;stroke-width:1.8}.quarn .likely{fill:#4d5bbf;fill-opacity:.22}
.quarn .spike{fill:none;stroke:#4d5bbf;stroke-width:3}
.quarn .evidence .outline{stroke:#b34700;stroke-width:2.6}
.quarn .evidence .head{fill:#b34700}
.quarn .evidence .heading .title,.quarn .evidence .heading .name,.quarn .evidence .heading .sign,.quarn .mark{fill:#fff}
.quarn .evidence .heading .icon{stroke:#fff}
.quarn .evidence .bar{fill:#cc5200}.quarn .evidence .spike{stroke:#cc5200}
.quarn .mark{font-size:10px;font-weight:bold}
.quarn .link{fill:none;stroke:#6b7887;stroke-width:1.4}
.quarn .tip{fill:#6b7887}
.quarn .informational{stroke-dasharray:6 4}.quarn .functional{stroke-dasharray:1.5 3.5;stroke-linecap:round;stroke-width:1.8}
.quarn .undirected{stroke-width:2.2}
@media (prefers-color-scheme:dark){
.quarn text{fill:#e7ecf3}
.quarn .page{fill:#14181d}
.quarn .body{fill:#1d232b}
.quarn .outline,.quarn .side{stroke:#718093}
.quarn .chance .head{fill:#23405f}.quarn .continuous .head{fill:#333a70}.quarn .decision .head{fill:#174a3a}
.quarn .utility .head{fill:#4f2b4b}.quarn .function .head{fill:#353f4b}
.quarn .chance .bar{fill:#6aaae6}.quarn .decision .bar{fill:#45bf95}.quarn .function .bar{fill:#9fb0c3}
.quarn .icon{stroke:#d3dbe5}.quarn .sign{fill:#d3dbe5}
.quarn .name,.quarn .beside,.quarn .missing{fill:#b1bcc9}
.quarn .track{fill:#343e4a}
.quarn .bell{stroke:#98a4f5}.quarn .likely{fill:#98a4f5}.quarn .spike{stroke:#98a4f5}
.quarn .evidence .outline{stroke:#f28b3c}.quarn .evidence .head{fill:#a84300}
.quarn .evidence .bar{fill:#f28b3c}.quarn .evidence .spike{stroke:#f28b3c}
.quarn .evidence .heading .name,.quarn .evidence .heading .sign{fill:#fff}.quarn .evidence .heading .icon{stroke:#fff}
.quarn .link{stroke:#93a0af}.quarn .tip{fill:#93a0af}
}
)";

}  // namespace tool
