#include "picture/style.h"

namespace wristlog::picture {

std::string pictureStyle() {
  return R"(.actogram{font-family:system-ui,"Segoe UI","Liberation Sans","DejaVu Sans",sans-serif}
.a-text{fill:#1d2733;font-size:12px}
.a-title{font-size:20px;font-weight:600}
.a-small{font-size:11px;fill:#52606d}
.a-tiny{font-size:9px;fill:#52606d}
.a-label{font-weight:600}
.a-warning{fill:#a3330c;font-weight:600}
.a-weekend{fill:#0b62a4}
.a-right{text-anchor:end}
.a-middle{text-anchor:middle}
.a-paper{fill:#fff}
.a-grid{fill:none;stroke:#dfe4e9;stroke-width:.6}
.a-midnight{fill:none;stroke:#9aa5b1;stroke-width:1}
.a-frame{fill:none;stroke:#9aa5b1;stroke-width:.8}
.a-bars{fill:#3b5268;stroke:#3b5268;stroke-width:.6}
.a-cut{fill:none;stroke:#e0218a;stroke-width:1.6}
.a-line{fill:none;stroke-width:1.1;stroke-linejoin:round}
.a-lux{stroke:#e06c00}
.a-red{stroke:#d1350f}
.a-green{stroke:#00916a}
.a-blue{stroke:#0a84d6}
.a-steps{stroke:#00916a}
.a-tint{fill:#f3e3f0}
.a-hatch{fill:none;stroke:#b0549b;stroke-width:.9}
.a-gap{fill:#d9dee4}
.a-gapline{fill:none;stroke:#7b8794;stroke-width:.8;stroke-dasharray:2 2}
.a-marker1{fill:#0b62a4;stroke:#0b62a4;stroke-width:.8}
.a-marker2{fill:#fff;stroke:#0b62a4;stroke-width:1.2}
.a-sign{fill:none;stroke:#c81e1e;stroke-width:1.6}
.a-solid{fill:#c81e1e}
.a-drop{fill:none;stroke:#c81e1e;stroke-width:.8;stroke-dasharray:3 2}
.a-change{fill:none;stroke:#1d2733;stroke-width:.9;stroke-dasharray:1 1.5}
@media screen and (prefers-color-scheme:dark){
.a-text{fill:#e4e8ec}
.a-small,.a-tiny{fill:#a9b4bf}
.a-warning{fill:#ffa07a}
.a-weekend{fill:#7cc4ff}
.a-paper{fill:#14191f}
.a-grid{stroke:#2c353f}
.a-midnight,.a-frame{stroke:#6b7886}
.a-bars{fill:#9db4c8;stroke:#9db4c8}
.a-cut{stroke:#ff6ec0}
.a-lux{stroke:#ff9a2e}
.a-red{stroke:#ff6a4d}
.a-green,.a-steps{stroke:#2fd6a3}
.a-blue{stroke:#4db1ff}
.a-tint{fill:#3a2636}
.a-hatch{stroke:#d98cc6}
.a-gap{fill:#333d48}
.a-gapline{stroke:#8c99a6}
.a-marker1{fill:#7cc4ff;stroke:#7cc4ff}
.a-marker2{fill:#14191f;stroke:#7cc4ff}
.a-sign,.a-drop{stroke:#ff7676}
.a-solid{fill:#ff7676}
.a-change{stroke:#e4e8ec}
}
)";
}

std::string pageStyle() {
  return R"(:root{color-scheme:light dark}
body{margin:0 auto;max-width:1080px;padding:24px;background:#fff;color:#1d2733;
font:15px/1.5 system-ui,"Segoe UI","Liberation Sans","DejaVu Sans",sans-serif}
h1{font-size:1.7em;margin:0 0 .2em;overflow-wrap:anywhere}
h2{font-size:1.2em;margin:1.8em 0 .5em}
.period{margin:0;color:#52606d}
.scroll{overflow-x:auto}
table{border-collapse:collapse;font-variant-numeric:tabular-nums}
th,td{padding:.25em .9em .25em 0;text-align:left;vertical-align:top;border-bottom:1px solid #dfe4e9}
td{overflow-wrap:anywhere}
thead th{border-bottom:2px solid #9aa5b1;vertical-align:bottom}
td.number{white-space:nowrap}
.number{text-align:right}
tbody th{font-weight:600;white-space:nowrap}
.facts tbody th{font-weight:400;color:#52606d}
.warnings{padding:.7em 1em .7em 2em;margin:1em 0 0;border-left:4px solid #d9480f;background:#fff4ec}
.note{color:#52606d}
figure{margin:0 0 10px;overflow-x:auto}
figure svg{width:100%;min-width:640px;height:auto;display:block}
figure .again{display:none}
@media screen and (prefers-color-scheme:dark){
body{background:#14191f;color:#e4e8ec}
.period,.note,.facts tbody th{color:#a9b4bf}
th,td{border-color:#2c353f}
thead th{border-color:#6b7886}
.warnings{background:#33231a;border-color:#ff8a4d}
}
@media print{
@page{margin:12mm}
:root{color-scheme:light}
body{max-width:none;padding:0;font-size:10pt}
figure,tr,.warnings{break-inside:avoid}
figure .again{display:block}
h2{break-after:avoid}
thead{display:table-header-group}
*{-webkit-print-color-adjust:exact;print-color-adjust:exact}
}
)";
}

}  // namespace wristlog::picture
