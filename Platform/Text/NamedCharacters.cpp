// SPDX-License-Identifier: MIT
#include "Platform/Text/NamedCharacters.h"

#include <array>

using namespace Qt::StringLiterals;

namespace platform {
namespace {

// The names that HTML defines, one text for each first letter: "|name;characters" again and again.
// clang-format off
constexpr std::array<QStringView, 52> namesByLetter = {
    u"|AElig;Æ|AMP;&|Aacute;Á|Abreve;Ă|Acirc;Â|Acy;А|Afr;\U0001d504|Agrave;À|Alpha;Α|Amacr;Ā|"
    u"And;⩓|Aogon;Ą|Aopf;\U0001d538|ApplyFunction;\u2061|Aring;Å|Ascr;\U0001d49c|Assign;≔|"
    u"Atilde;Ã|Auml;Ä|",
    u"|Backslash;∖|Barv;⫧|Barwed;⌆|Bcy;Б|Because;∵|Bernoullis;ℬ|Beta;Β|Bfr;\U0001d505|"
    u"Bopf;\U0001d539|Breve;˘|Bscr;ℬ|Bumpeq;≎|",
    u"|CHcy;Ч|COPY;©|Cacute;Ć|Cap;⋒|CapitalDifferentialD;ⅅ|Cayleys;ℭ|Ccaron;Č|Ccedil;Ç|Ccirc;Ĉ|"
    u"Cconint;∰|Cdot;Ċ|Cedilla;¸|CenterDot;·|Cfr;ℭ|Chi;Χ|CircleDot;⊙|CircleMinus;⊖|CirclePlus;⊕|"
    u"CircleTimes;⊗|ClockwiseContourIntegral;∲|CloseCurlyDoubleQuote;”|CloseCurlyQuote;’|Colon;∷|"
    u"Colone;⩴|Congruent;≡|Conint;∯|ContourIntegral;∮|Copf;ℂ|Coproduct;∐|"
    u"CounterClockwiseContourIntegral;∳|Cross;⨯|Cscr;\U0001d49e|Cup;⋓|CupCap;≍|",
    u"|DD;ⅅ|DDotrahd;⤑|DJcy;Ђ|DScy;Ѕ|DZcy;Џ|Dagger;‡|Darr;↡|Dashv;⫤|Dcaron;Ď|Dcy;Д|Del;∇|Delta;Δ|"
    u"Dfr;\U0001d507|DiacriticalAcute;´|DiacriticalDot;˙|DiacriticalDoubleAcute;˝|"
    u"DiacriticalGrave;`|DiacriticalTilde;˜|Diamond;⋄|DifferentialD;ⅆ|Dopf;\U0001d53b|Dot;¨|"
    u"DotDot;\u20dc|DotEqual;≐|DoubleContourIntegral;∯|DoubleDot;¨|DoubleDownArrow;⇓|"
    u"DoubleLeftArrow;⇐|DoubleLeftRightArrow;⇔|DoubleLeftTee;⫤|DoubleLongLeftArrow;⟸|"
    u"DoubleLongLeftRightArrow;⟺|DoubleLongRightArrow;⟹|DoubleRightArrow;⇒|DoubleRightTee;⊨|"
    u"DoubleUpArrow;⇑|DoubleUpDownArrow;⇕|DoubleVerticalBar;∥|DownArrow;↓|DownArrowBar;⤓|"
    u"DownArrowUpArrow;⇵|DownBreve;\u0311|DownLeftRightVector;⥐|DownLeftTeeVector;⥞|"
    u"DownLeftVector;↽|DownLeftVectorBar;⥖|DownRightTeeVector;⥟|DownRightVector;⇁|"
    u"DownRightVectorBar;⥗|DownTee;⊤|DownTeeArrow;↧|Downarrow;⇓|Dscr;\U0001d49f|Dstrok;Đ|",
    u"|ENG;Ŋ|ETH;Ð|Eacute;É|Ecaron;Ě|Ecirc;Ê|Ecy;Э|Edot;Ė|Efr;\U0001d508|Egrave;È|Element;∈|"
    u"Emacr;Ē|EmptySmallSquare;◻|EmptyVerySmallSquare;▫|Eogon;Ę|Eopf;\U0001d53c|Epsilon;Ε|Equal;⩵|"
    u"EqualTilde;≂|Equilibrium;⇌|Escr;ℰ|Esim;⩳|Eta;Η|Euml;Ë|Exists;∃|ExponentialE;ⅇ|",
    u"|Fcy;Ф|Ffr;\U0001d509|FilledSmallSquare;◼|FilledVerySmallSquare;▪|Fopf;\U0001d53d|ForAll;∀|"
    u"Fouriertrf;ℱ|Fscr;ℱ|",
    u"|GJcy;Ѓ|GT;>|Gamma;Γ|Gammad;Ϝ|Gbreve;Ğ|Gcedil;Ģ|Gcirc;Ĝ|Gcy;Г|Gdot;Ġ|Gfr;\U0001d50a|Gg;⋙|"
    u"Gopf;\U0001d53e|GreaterEqual;≥|GreaterEqualLess;⋛|GreaterFullEqual;≧|GreaterGreater;⪢|"
    u"GreaterLess;≷|GreaterSlantEqual;⩾|GreaterTilde;≳|Gscr;\U0001d4a2|Gt;≫|",
    u"|HARDcy;Ъ|Hacek;\u02c7|Hat;^|Hcirc;Ĥ|Hfr;ℌ|HilbertSpace;ℋ|Hopf;ℍ|HorizontalLine;─|Hscr;ℋ|"
    u"Hstrok;Ħ|HumpDownHump;≎|HumpEqual;≏|",
    u"|IEcy;Е|IJlig;Ĳ|IOcy;Ё|Iacute;Í|Icirc;Î|Icy;И|Idot;İ|Ifr;ℑ|Igrave;Ì|Im;ℑ|Imacr;Ī|"
    u"ImaginaryI;ⅈ|Implies;⇒|Int;∬|Integral;∫|Intersection;⋂|InvisibleComma;\u2063|"
    u"InvisibleTimes;\u2062|Iogon;Į|Iopf;\U0001d540|Iota;Ι|Iscr;ℐ|Itilde;Ĩ|Iukcy;І|Iuml;Ï|",
    u"|Jcirc;Ĵ|Jcy;Й|Jfr;\U0001d50d|Jopf;\U0001d541|Jscr;\U0001d4a5|Jsercy;Ј|Jukcy;Є|",
    u"|KHcy;Х|KJcy;Ќ|Kappa;Κ|Kcedil;Ķ|Kcy;К|Kfr;\U0001d50e|Kopf;\U0001d542|Kscr;\U0001d4a6|",
    u"|LJcy;Љ|LT;<|Lacute;Ĺ|Lambda;Λ|Lang;⟪|Laplacetrf;ℒ|Larr;↞|Lcaron;Ľ|Lcedil;Ļ|Lcy;Л|"
    u"LeftAngleBracket;⟨|LeftArrow;←|LeftArrowBar;⇤|LeftArrowRightArrow;⇆|LeftCeiling;⌈|"
    u"LeftDoubleBracket;⟦|LeftDownTeeVector;⥡|LeftDownVector;⇃|LeftDownVectorBar;⥙|LeftFloor;⌊|"
    u"LeftRightArrow;↔|LeftRightVector;⥎|LeftTee;⊣|LeftTeeArrow;↤|LeftTeeVector;⥚|LeftTriangle;⊲|"
    u"LeftTriangleBar;⧏|LeftTriangleEqual;⊴|LeftUpDownVector;⥑|LeftUpTeeVector;⥠|LeftUpVector;↿|"
    u"LeftUpVectorBar;⥘|LeftVector;↼|LeftVectorBar;⥒|Leftarrow;⇐|Leftrightarrow;⇔|"
    u"LessEqualGreater;⋚|LessFullEqual;≦|LessGreater;≶|LessLess;⪡|LessSlantEqual;⩽|LessTilde;≲|"
    u"Lfr;\U0001d50f|Ll;⋘|Lleftarrow;⇚|Lmidot;Ŀ|LongLeftArrow;⟵|LongLeftRightArrow;⟷|"
    u"LongRightArrow;⟶|Longleftarrow;⟸|Longleftrightarrow;⟺|Longrightarrow;⟹|Lopf;\U0001d543|"
    u"LowerLeftArrow;↙|LowerRightArrow;↘|Lscr;ℒ|Lsh;↰|Lstrok;Ł|Lt;≪|",
    u"|Map;⤅|Mcy;М|MediumSpace;\u205f|Mellintrf;ℳ|Mfr;\U0001d510|MinusPlus;∓|Mopf;\U0001d544|"
    u"Mscr;ℳ|Mu;Μ|",
    u"|NJcy;Њ|Nacute;Ń|Ncaron;Ň|Ncedil;Ņ|Ncy;Н|NegativeMediumSpace;\u200b|"
    u"NegativeThickSpace;\u200b|NegativeThinSpace;\u200b|NegativeVeryThinSpace;\u200b|"
    u"NestedGreaterGreater;≫|NestedLessLess;≪|NewLine;\n|Nfr;\U0001d511|NoBreak;\u2060|"
    u"NonBreakingSpace;\u00a0|Nopf;ℕ|Not;⫬|NotCongruent;≢|NotCupCap;≭|NotDoubleVerticalBar;∦|"
    u"NotElement;∉|NotEqual;≠|NotEqualTilde;≂\u0338|NotExists;∄|NotGreater;≯|NotGreaterEqual;≱|"
    u"NotGreaterFullEqual;≧\u0338|NotGreaterGreater;≫\u0338|NotGreaterLess;≹|"
    u"NotGreaterSlantEqual;⩾\u0338|NotGreaterTilde;≵|NotHumpDownHump;≎\u0338|NotHumpEqual;≏\u0338|"
    u"NotLeftTriangle;⋪|NotLeftTriangleBar;⧏\u0338|NotLeftTriangleEqual;⋬|NotLess;≮|"
    u"NotLessEqual;≰|NotLessGreater;≸|NotLessLess;≪\u0338|NotLessSlantEqual;⩽\u0338|"
    u"NotLessTilde;≴|NotNestedGreaterGreater;⪢\u0338|NotNestedLessLess;⪡\u0338|NotPrecedes;⊀|"
    u"NotPrecedesEqual;⪯\u0338|NotPrecedesSlantEqual;⋠|NotReverseElement;∌|NotRightTriangle;⋫|"
    u"NotRightTriangleBar;⧐\u0338|NotRightTriangleEqual;⋭|NotSquareSubset;⊏\u0338|"
    u"NotSquareSubsetEqual;⋢|NotSquareSuperset;⊐\u0338|NotSquareSupersetEqual;⋣|NotSubset;⊂\u20d2|"
    u"NotSubsetEqual;⊈|NotSucceeds;⊁|NotSucceedsEqual;⪰\u0338|NotSucceedsSlantEqual;⋡|"
    u"NotSucceedsTilde;≿\u0338|NotSuperset;⊃\u20d2|NotSupersetEqual;⊉|NotTilde;≁|NotTildeEqual;≄|"
    u"NotTildeFullEqual;≇|NotTildeTilde;≉|NotVerticalBar;∤|Nscr;\U0001d4a9|Ntilde;Ñ|Nu;Ν|",
    u"|OElig;Œ|Oacute;Ó|Ocirc;Ô|Ocy;О|Odblac;Ő|Ofr;\U0001d512|Ograve;Ò|Omacr;Ō|Omega;Ω|Omicron;Ο|"
    u"Oopf;\U0001d546|OpenCurlyDoubleQuote;“|OpenCurlyQuote;‘|Or;⩔|Oscr;\U0001d4aa|Oslash;Ø|"
    u"Otilde;Õ|Otimes;⨷|Ouml;Ö|OverBar;‾|OverBrace;⏞|OverBracket;⎴|OverParenthesis;⏜|",
    u"|PartialD;∂|Pcy;П|Pfr;\U0001d513|Phi;Φ|Pi;Π|PlusMinus;±|Poincareplane;ℌ|Popf;ℙ|Pr;⪻|"
    u"Precedes;≺|PrecedesEqual;⪯|PrecedesSlantEqual;≼|PrecedesTilde;≾|Prime;″|Product;∏|"
    u"Proportion;∷|Proportional;∝|Pscr;\U0001d4ab|Psi;Ψ|",
    u"|QUOT;\"|Qfr;\U0001d514|Qopf;ℚ|Qscr;\U0001d4ac|",
    u"|RBarr;⤐|REG;®|Racute;Ŕ|Rang;⟫|Rarr;↠|Rarrtl;⤖|Rcaron;Ř|Rcedil;Ŗ|Rcy;Р|Re;ℜ|"
    u"ReverseElement;∋|ReverseEquilibrium;⇋|ReverseUpEquilibrium;⥯|Rfr;ℜ|Rho;Ρ|"
    u"RightAngleBracket;⟩|RightArrow;→|RightArrowBar;⇥|RightArrowLeftArrow;⇄|RightCeiling;⌉|"
    u"RightDoubleBracket;⟧|RightDownTeeVector;⥝|RightDownVector;⇂|RightDownVectorBar;⥕|"
    u"RightFloor;⌋|RightTee;⊢|RightTeeArrow;↦|RightTeeVector;⥛|RightTriangle;⊳|RightTriangleBar;⧐|"
    u"RightTriangleEqual;⊵|RightUpDownVector;⥏|RightUpTeeVector;⥜|RightUpVector;↾|"
    u"RightUpVectorBar;⥔|RightVector;⇀|RightVectorBar;⥓|Rightarrow;⇒|Ropf;ℝ|RoundImplies;⥰|"
    u"Rrightarrow;⇛|Rscr;ℛ|Rsh;↱|RuleDelayed;⧴|",
    u"|SHCHcy;Щ|SHcy;Ш|SOFTcy;Ь|Sacute;Ś|Sc;⪼|Scaron;Š|Scedil;Ş|Scirc;Ŝ|Scy;С|Sfr;\U0001d516|"
    u"ShortDownArrow;↓|ShortLeftArrow;←|ShortRightArrow;→|ShortUpArrow;↑|Sigma;Σ|SmallCircle;∘|"
    u"Sopf;\U0001d54a|Sqrt;√|Square;□|SquareIntersection;⊓|SquareSubset;⊏|SquareSubsetEqual;⊑|"
    u"SquareSuperset;⊐|SquareSupersetEqual;⊒|SquareUnion;⊔|Sscr;\U0001d4ae|Star;⋆|Sub;⋐|Subset;⋐|"
    u"SubsetEqual;⊆|Succeeds;≻|SucceedsEqual;⪰|SucceedsSlantEqual;≽|SucceedsTilde;≿|SuchThat;∋|"
    u"Sum;∑|Sup;⋑|Superset;⊃|SupersetEqual;⊇|Supset;⋑|",
    u"|THORN;Þ|TRADE;™|TSHcy;Ћ|TScy;Ц|Tab;\t|Tau;Τ|Tcaron;Ť|Tcedil;Ţ|Tcy;Т|Tfr;\U0001d517|"
    u"Therefore;∴|Theta;Θ|ThickSpace;\u205f\u200a|ThinSpace;\u2009|Tilde;∼|TildeEqual;≃|"
    u"TildeFullEqual;≅|TildeTilde;≈|Topf;\U0001d54b|TripleDot;\u20db|Tscr;\U0001d4af|Tstrok;Ŧ|",
    u"|Uacute;Ú|Uarr;↟|Uarrocir;⥉|Ubrcy;Ў|Ubreve;Ŭ|Ucirc;Û|Ucy;У|Udblac;Ű|Ufr;\U0001d518|Ugrave;Ù|"
    u"Umacr;Ū|UnderBar;_|UnderBrace;⏟|UnderBracket;⎵|UnderParenthesis;⏝|Union;⋃|UnionPlus;⊎|"
    u"Uogon;Ų|Uopf;\U0001d54c|UpArrow;↑|UpArrowBar;⤒|UpArrowDownArrow;⇅|UpDownArrow;↕|"
    u"UpEquilibrium;⥮|UpTee;⊥|UpTeeArrow;↥|Uparrow;⇑|Updownarrow;⇕|UpperLeftArrow;↖|"
    u"UpperRightArrow;↗|Upsi;ϒ|Upsilon;Υ|Uring;Ů|Uscr;\U0001d4b0|Utilde;Ũ|Uuml;Ü|",
    u"|VDash;⊫|Vbar;⫫|Vcy;В|Vdash;⊩|Vdashl;⫦|Vee;⋁|Verbar;‖|Vert;‖|VerticalBar;∣|VerticalLine;||"
    u"VerticalSeparator;❘|VerticalTilde;≀|VeryThinSpace;\u200a|Vfr;\U0001d519|Vopf;\U0001d54d|"
    u"Vscr;\U0001d4b1|Vvdash;⊪|",
    u"|Wcirc;Ŵ|Wedge;⋀|Wfr;\U0001d51a|Wopf;\U0001d54e|Wscr;\U0001d4b2|",
    u"|Xfr;\U0001d51b|Xi;Ξ|Xopf;\U0001d54f|Xscr;\U0001d4b3|",
    u"|YAcy;Я|YIcy;Ї|YUcy;Ю|Yacute;Ý|Ycirc;Ŷ|Ycy;Ы|Yfr;\U0001d51c|Yopf;\U0001d550|Yscr;\U0001d4b4|"
    u"Yuml;Ÿ|",
    u"|ZHcy;Ж|Zacute;Ź|Zcaron;Ž|Zcy;З|Zdot;Ż|ZeroWidthSpace;\u200b|Zeta;Ζ|Zfr;ℨ|Zopf;ℤ|"
    u"Zscr;\U0001d4b5|",
    u"|aacute;á|abreve;ă|ac;∾|acE;∾\u0333|acd;∿|acirc;â|acute;´|acy;а|aelig;æ|af;\u2061|"
    u"afr;\U0001d51e|agrave;à|alefsym;\u2135|aleph;\u2135|alpha;α|amacr;ā|amalg;⨿|amp;&|and;∧|"
    u"andand;⩕|andd;⩜|andslope;⩘|andv;⩚|ang;∠|ange;⦤|angle;∠|angmsd;∡|angmsdaa;⦨|angmsdab;⦩|"
    u"angmsdac;⦪|angmsdad;⦫|angmsdae;⦬|angmsdaf;⦭|angmsdag;⦮|angmsdah;⦯|angrt;∟|angrtvb;⊾|"
    u"angrtvbd;⦝|angsph;∢|angst;Å|angzarr;⍼|aogon;ą|aopf;\U0001d552|ap;≈|apE;⩰|apacir;⩯|ape;≊|"
    u"apid;≋|apos;'|approx;≈|approxeq;≊|aring;å|ascr;\U0001d4b6|ast;*|asymp;≈|asympeq;≍|atilde;ã|"
    u"auml;ä|awconint;∳|awint;⨑|",
    u"|bNot;⫭|backcong;≌|backepsilon;϶|backprime;‵|backsim;∽|backsimeq;⋍|barvee;⊽|barwed;⌅|"
    u"barwedge;⌅|bbrk;⎵|bbrktbrk;⎶|bcong;≌|bcy;б|bdquo;„|becaus;∵|because;∵|bemptyv;⦰|bepsi;϶|"
    u"bernou;ℬ|beta;β|beth;\u2136|between;≬|bfr;\U0001d51f|bigcap;⋂|bigcirc;◯|bigcup;⋃|bigodot;⨀|"
    u"bigoplus;⨁|bigotimes;⨂|bigsqcup;⨆|bigstar;★|bigtriangledown;▽|bigtriangleup;△|biguplus;⨄|"
    u"bigvee;⋁|bigwedge;⋀|bkarow;⤍|blacklozenge;⧫|blacksquare;▪|blacktriangle;▴|"
    u"blacktriangledown;▾|blacktriangleleft;◂|blacktriangleright;▸|blank;␣|blk12;▒|blk14;░|"
    u"blk34;▓|block;█|bne;=\u20e5|bnequiv;≡\u20e5|bnot;⌐|bopf;\U0001d553|bot;⊥|bottom;⊥|bowtie;⋈|"
    u"boxDL;╗|boxDR;╔|boxDl;╖|boxDr;╓|boxH;═|boxHD;╦|boxHU;╩|boxHd;╤|boxHu;╧|boxUL;╝|boxUR;╚|"
    u"boxUl;╜|boxUr;╙|boxV;║|boxVH;╬|boxVL;╣|boxVR;╠|boxVh;╫|boxVl;╢|boxVr;╟|boxbox;⧉|boxdL;╕|"
    u"boxdR;╒|boxdl;┐|boxdr;┌|boxh;─|boxhD;╥|boxhU;╨|boxhd;┬|boxhu;┴|boxminus;⊟|boxplus;⊞|"
    u"boxtimes;⊠|boxuL;╛|boxuR;╘|boxul;┘|boxur;└|boxv;│|boxvH;╪|boxvL;╡|boxvR;╞|boxvh;┼|boxvl;┤|"
    u"boxvr;├|bprime;‵|breve;˘|brvbar;¦|bscr;\U0001d4b7|bsemi;⁏|bsim;∽|bsime;⋍|bsol;\\|bsolb;⧅|"
    u"bsolhsub;⟈|bull;•|bullet;•|bump;≎|bumpE;⪮|bumpe;≏|bumpeq;≏|",
    u"|cacute;ć|cap;∩|capand;⩄|capbrcup;⩉|capcap;⩋|capcup;⩇|capdot;⩀|caps;∩\ufe00|caret;⁁|"
    u"caron;\u02c7|ccaps;⩍|ccaron;č|ccedil;ç|ccirc;ĉ|ccups;⩌|ccupssm;⩐|cdot;ċ|cedil;¸|cemptyv;⦲|"
    u"cent;¢|centerdot;·|cfr;\U0001d520|chcy;ч|check;✓|checkmark;✓|chi;χ|cir;○|cirE;⧃|circ;\u02c6|"
    u"circeq;≗|circlearrowleft;↺|circlearrowright;↻|circledR;®|circledS;Ⓢ|circledast;⊛|"
    u"circledcirc;⊚|circleddash;⊝|cire;≗|cirfnint;⨐|cirmid;⫯|cirscir;⧂|clubs;♣|clubsuit;♣|colon;:|"
    u"colone;≔|coloneq;≔|comma;,|commat;@|comp;∁|compfn;∘|complement;∁|complexes;ℂ|cong;≅|"
    u"congdot;⩭|conint;∮|copf;\U0001d554|coprod;∐|copy;©|copysr;℗|crarr;↵|cross;✗|cscr;\U0001d4b8|"
    u"csub;⫏|csube;⫑|csup;⫐|csupe;⫒|ctdot;⋯|cudarrl;⤸|cudarrr;⤵|cuepr;⋞|cuesc;⋟|cularr;↶|"
    u"cularrp;⤽|cup;∪|cupbrcap;⩈|cupcap;⩆|cupcup;⩊|cupdot;⊍|cupor;⩅|cups;∪\ufe00|curarr;↷|"
    u"curarrm;⤼|curlyeqprec;⋞|curlyeqsucc;⋟|curlyvee;⋎|curlywedge;⋏|curren;¤|curvearrowleft;↶|"
    u"curvearrowright;↷|cuvee;⋎|cuwed;⋏|cwconint;∲|cwint;∱|cylcty;⌭|",
    u"|dArr;⇓|dHar;⥥|dagger;†|daleth;\u2138|darr;↓|dash;‐|dashv;⊣|dbkarow;⤏|dblac;˝|dcaron;ď|"
    u"dcy;д|dd;ⅆ|ddagger;‡|ddarr;⇊|ddotseq;⩷|deg;°|delta;δ|demptyv;⦱|dfisht;⥿|dfr;\U0001d521|"
    u"dharl;⇃|dharr;⇂|diam;⋄|diamond;⋄|diamondsuit;♦|diams;♦|die;¨|digamma;ϝ|disin;⋲|div;÷|"
    u"divide;÷|divideontimes;⋇|divonx;⋇|djcy;ђ|dlcorn;⌞|dlcrop;⌍|dollar;$|dopf;\U0001d555|dot;˙|"
    u"doteq;≐|doteqdot;≑|dotminus;∸|dotplus;∔|dotsquare;⊡|doublebarwedge;⌆|downarrow;↓|"
    u"downdownarrows;⇊|downharpoonleft;⇃|downharpoonright;⇂|drbkarow;⤐|drcorn;⌟|drcrop;⌌|"
    u"dscr;\U0001d4b9|dscy;ѕ|dsol;⧶|dstrok;đ|dtdot;⋱|dtri;▿|dtrif;▾|duarr;⇵|duhar;⥯|dwangle;⦦|"
    u"dzcy;џ|dzigrarr;⟿|",
    u"|eDDot;⩷|eDot;≑|eacute;é|easter;⩮|ecaron;ě|ecir;≖|ecirc;ê|ecolon;≕|ecy;э|edot;ė|ee;ⅇ|"
    u"efDot;≒|efr;\U0001d522|eg;⪚|egrave;è|egs;⪖|egsdot;⪘|el;⪙|elinters;⏧|ell;ℓ|els;⪕|elsdot;⪗|"
    u"emacr;ē|empty;∅|emptyset;∅|emptyv;∅|emsp;\u2003|emsp13;\u2004|emsp14;\u2005|eng;ŋ|"
    u"ensp;\u2002|eogon;ę|eopf;\U0001d556|epar;⋕|eparsl;⧣|eplus;⩱|epsi;ε|epsilon;ε|epsiv;ϵ|"
    u"eqcirc;≖|eqcolon;≕|eqsim;≂|eqslantgtr;⪖|eqslantless;⪕|equals;=|equest;≟|equiv;≡|equivDD;⩸|"
    u"eqvparsl;⧥|erDot;≓|erarr;⥱|escr;ℯ|esdot;≐|esim;≂|eta;η|eth;ð|euml;ë|euro;€|excl;!|exist;∃|"
    u"expectation;ℰ|exponentiale;ⅇ|",
    u"|fallingdotseq;≒|fcy;ф|female;♀|ffilig;ﬃ|fflig;ﬀ|ffllig;ﬄ|ffr;\U0001d523|filig;ﬁ|fjlig;fj|"
    u"flat;♭|fllig;ﬂ|fltns;▱|fnof;ƒ|fopf;\U0001d557|forall;∀|fork;⋔|forkv;⫙|fpartint;⨍|frac12;½|"
    u"frac13;⅓|frac14;¼|frac15;⅕|frac16;⅙|frac18;⅛|frac23;⅔|frac25;⅖|frac34;¾|frac35;⅗|frac38;⅜|"
    u"frac45;⅘|frac56;⅚|frac58;⅝|frac78;⅞|frasl;⁄|frown;⌢|fscr;\U0001d4bb|",
    u"|gE;≧|gEl;⪌|gacute;ǵ|gamma;γ|gammad;ϝ|gap;⪆|gbreve;ğ|gcirc;ĝ|gcy;г|gdot;ġ|ge;≥|gel;⋛|geq;≥|"
    u"geqq;≧|geqslant;⩾|ges;⩾|gescc;⪩|gesdot;⪀|gesdoto;⪂|gesdotol;⪄|gesl;⋛\ufe00|gesles;⪔|"
    u"gfr;\U0001d524|gg;≫|ggg;⋙|gimel;\u2137|gjcy;ѓ|gl;≷|glE;⪒|gla;⪥|glj;⪤|gnE;≩|gnap;⪊|"
    u"gnapprox;⪊|gne;⪈|gneq;⪈|gneqq;≩|gnsim;⋧|gopf;\U0001d558|grave;`|gscr;ℊ|gsim;≳|gsime;⪎|"
    u"gsiml;⪐|gt;>|gtcc;⪧|gtcir;⩺|gtdot;⋗|gtlPar;⦕|gtquest;⩼|gtrapprox;⪆|gtrarr;⥸|gtrdot;⋗|"
    u"gtreqless;⋛|gtreqqless;⪌|gtrless;≷|gtrsim;≳|gvertneqq;≩\ufe00|gvnE;≩\ufe00|",
    u"|hArr;⇔|hairsp;\u200a|half;½|hamilt;ℋ|hardcy;ъ|harr;↔|harrcir;⥈|harrw;↭|hbar;ℏ|hcirc;ĥ|"
    u"hearts;♥|heartsuit;♥|hellip;…|hercon;⊹|hfr;\U0001d525|hksearow;⤥|hkswarow;⤦|hoarr;⇿|"
    u"homtht;∻|hookleftarrow;↩|hookrightarrow;↪|hopf;\U0001d559|horbar;―|hscr;\U0001d4bd|hslash;ℏ|"
    u"hstrok;ħ|hybull;⁃|hyphen;‐|",
    u"|iacute;í|ic;\u2063|icirc;î|icy;и|iecy;е|iexcl;¡|iff;⇔|ifr;\U0001d526|igrave;ì|ii;ⅈ|"
    u"iiiint;⨌|iiint;∭|iinfin;⧜|iiota;℩|ijlig;ĳ|imacr;ī|image;ℑ|imagline;ℐ|imagpart;ℑ|imath;ı|"
    u"imof;⊷|imped;Ƶ|in;∈|incare;℅|infin;∞|infintie;⧝|inodot;ı|int;∫|intcal;⊺|integers;ℤ|"
    u"intercal;⊺|intlarhk;⨗|intprod;⨼|iocy;ё|iogon;į|iopf;\U0001d55a|iota;ι|iprod;⨼|iquest;¿|"
    u"iscr;\U0001d4be|isin;∈|isinE;⋹|isindot;⋵|isins;⋴|isinsv;⋳|isinv;∈|it;\u2062|itilde;ĩ|"
    u"iukcy;і|iuml;ï|",
    u"|jcirc;ĵ|jcy;й|jfr;\U0001d527|jmath;ȷ|jopf;\U0001d55b|jscr;\U0001d4bf|jsercy;ј|jukcy;є|",
    u"|kappa;κ|kappav;ϰ|kcedil;ķ|kcy;к|kfr;\U0001d528|kgreen;ĸ|khcy;х|kjcy;ќ|kopf;\U0001d55c|"
    u"kscr;\U0001d4c0|",
    u"|lAarr;⇚|lArr;⇐|lAtail;⤛|lBarr;⤎|lE;≦|lEg;⪋|lHar;⥢|lacute;ĺ|laemptyv;⦴|lagran;ℒ|lambda;λ|"
    u"lang;⟨|langd;⦑|langle;⟨|lap;⪅|laquo;«|larr;←|larrb;⇤|larrbfs;⤟|larrfs;⤝|larrhk;↩|larrlp;↫|"
    u"larrpl;⤹|larrsim;⥳|larrtl;↢|lat;⪫|latail;⤙|late;⪭|lates;⪭\ufe00|lbarr;⤌|lbbrk;❲|lbrace;{|"
    u"lbrack;[|lbrke;⦋|lbrksld;⦏|lbrkslu;⦍|lcaron;ľ|lcedil;ļ|lceil;⌈|lcub;{|lcy;л|ldca;⤶|ldquo;“|"
    u"ldquor;„|ldrdhar;⥧|ldrushar;⥋|ldsh;↲|le;≤|leftarrow;←|leftarrowtail;↢|leftharpoondown;↽|"
    u"leftharpoonup;↼|leftleftarrows;⇇|leftrightarrow;↔|leftrightarrows;⇆|leftrightharpoons;⇋|"
    u"leftrightsquigarrow;↭|leftthreetimes;⋋|leg;⋚|leq;≤|leqq;≦|leqslant;⩽|les;⩽|lescc;⪨|lesdot;⩿|"
    u"lesdoto;⪁|lesdotor;⪃|lesg;⋚\ufe00|lesges;⪓|lessapprox;⪅|lessdot;⋖|lesseqgtr;⋚|lesseqqgtr;⪋|"
    u"lessgtr;≶|lesssim;≲|lfisht;⥼|lfloor;⌊|lfr;\U0001d529|lg;≶|lgE;⪑|lhard;↽|lharu;↼|lharul;⥪|"
    u"lhblk;▄|ljcy;љ|ll;≪|llarr;⇇|llcorner;⌞|llhard;⥫|lltri;◺|lmidot;ŀ|lmoust;⎰|lmoustache;⎰|"
    u"lnE;≨|lnap;⪉|lnapprox;⪉|lne;⪇|lneq;⪇|lneqq;≨|lnsim;⋦|loang;⟬|loarr;⇽|lobrk;⟦|"
    u"longleftarrow;⟵|longleftrightarrow;⟷|longmapsto;⟼|longrightarrow;⟶|looparrowleft;↫|"
    u"looparrowright;↬|lopar;⦅|lopf;\U0001d55d|loplus;⨭|lotimes;⨴|lowast;∗|lowbar;_|loz;◊|"
    u"lozenge;◊|lozf;⧫|lpar;(|lparlt;⦓|lrarr;⇆|lrcorner;⌟|lrhar;⇋|lrhard;⥭|lrm;\u200e|lrtri;⊿|"
    u"lsaquo;‹|lscr;\U0001d4c1|lsh;↰|lsim;≲|lsime;⪍|lsimg;⪏|lsqb;[|lsquo;‘|lsquor;‚|lstrok;ł|lt;<|"
    u"ltcc;⪦|ltcir;⩹|ltdot;⋖|lthree;⋋|ltimes;⋉|ltlarr;⥶|ltquest;⩻|ltrPar;⦖|ltri;◃|ltrie;⊴|ltrif;◂|"
    u"lurdshar;⥊|luruhar;⥦|lvertneqq;≨\ufe00|lvnE;≨\ufe00|",
    u"|mDDot;∺|macr;¯|male;♂|malt;✠|maltese;✠|map;↦|mapsto;↦|mapstodown;↧|mapstoleft;↤|mapstoup;↥|"
    u"marker;▮|mcomma;⨩|mcy;м|mdash;—|measuredangle;∡|mfr;\U0001d52a|mho;℧|micro;µ|mid;∣|midast;*|"
    u"midcir;⫰|middot;·|minus;−|minusb;⊟|minusd;∸|minusdu;⨪|mlcp;⫛|mldr;…|mnplus;∓|models;⊧|"
    u"mopf;\U0001d55e|mp;∓|mscr;\U0001d4c2|mstpos;∾|mu;μ|multimap;⊸|mumap;⊸|",
    u"|nGg;⋙\u0338|nGt;≫\u20d2|nGtv;≫\u0338|nLeftarrow;⇍|nLeftrightarrow;⇎|nLl;⋘\u0338|"
    u"nLt;≪\u20d2|nLtv;≪\u0338|nRightarrow;⇏|nVDash;⊯|nVdash;⊮|nabla;∇|nacute;ń|nang;∠\u20d2|"
    u"nap;≉|napE;⩰\u0338|napid;≋\u0338|napos;ŉ|napprox;≉|natur;♮|natural;♮|naturals;ℕ|nbsp;\u00a0|"
    u"nbump;≎\u0338|nbumpe;≏\u0338|ncap;⩃|ncaron;ň|ncedil;ņ|ncong;≇|ncongdot;⩭\u0338|ncup;⩂|ncy;н|"
    u"ndash;–|ne;≠|neArr;⇗|nearhk;⤤|nearr;↗|nearrow;↗|nedot;≐\u0338|nequiv;≢|nesear;⤨|"
    u"nesim;≂\u0338|nexist;∄|nexists;∄|nfr;\U0001d52b|ngE;≧\u0338|nge;≱|ngeq;≱|ngeqq;≧\u0338|"
    u"ngeqslant;⩾\u0338|nges;⩾\u0338|ngsim;≵|ngt;≯|ngtr;≯|nhArr;⇎|nharr;↮|nhpar;⫲|ni;∋|nis;⋼|"
    u"nisd;⋺|niv;∋|njcy;њ|nlArr;⇍|nlE;≦\u0338|nlarr;↚|nldr;‥|nle;≰|nleftarrow;↚|nleftrightarrow;↮|"
    u"nleq;≰|nleqq;≦\u0338|nleqslant;⩽\u0338|nles;⩽\u0338|nless;≮|nlsim;≴|nlt;≮|nltri;⋪|nltrie;⋬|"
    u"nmid;∤|nopf;\U0001d55f|not;¬|notin;∉|notinE;⋹\u0338|notindot;⋵\u0338|notinva;∉|notinvb;⋷|"
    u"notinvc;⋶|notni;∌|notniva;∌|notnivb;⋾|notnivc;⋽|npar;∦|nparallel;∦|nparsl;⫽\u20e5|"
    u"npart;∂\u0338|npolint;⨔|npr;⊀|nprcue;⋠|npre;⪯\u0338|nprec;⊀|npreceq;⪯\u0338|nrArr;⇏|nrarr;↛|"
    u"nrarrc;⤳\u0338|nrarrw;↝\u0338|nrightarrow;↛|nrtri;⋫|nrtrie;⋭|nsc;⊁|nsccue;⋡|nsce;⪰\u0338|"
    u"nscr;\U0001d4c3|nshortmid;∤|nshortparallel;∦|nsim;≁|nsime;≄|nsimeq;≄|nsmid;∤|nspar;∦|"
    u"nsqsube;⋢|nsqsupe;⋣|nsub;⊄|nsubE;⫅\u0338|nsube;⊈|nsubset;⊂\u20d2|nsubseteq;⊈|"
    u"nsubseteqq;⫅\u0338|nsucc;⊁|nsucceq;⪰\u0338|nsup;⊅|nsupE;⫆\u0338|nsupe;⊉|nsupset;⊃\u20d2|"
    u"nsupseteq;⊉|nsupseteqq;⫆\u0338|ntgl;≹|ntilde;ñ|ntlg;≸|ntriangleleft;⋪|ntrianglelefteq;⋬|"
    u"ntriangleright;⋫|ntrianglerighteq;⋭|nu;ν|num;#|numero;№|numsp;\u2007|nvDash;⊭|nvHarr;⤄|"
    u"nvap;≍\u20d2|nvdash;⊬|nvge;≥\u20d2|nvgt;>\u20d2|nvinfin;⧞|nvlArr;⤂|nvle;≤\u20d2|"
    u"nvlt;<\u20d2|nvltrie;⊴\u20d2|nvrArr;⤃|nvrtrie;⊵\u20d2|nvsim;∼\u20d2|nwArr;⇖|nwarhk;⤣|"
    u"nwarr;↖|nwarrow;↖|nwnear;⤧|",
    u"|oS;Ⓢ|oacute;ó|oast;⊛|ocir;⊚|ocirc;ô|ocy;о|odash;⊝|odblac;ő|odiv;⨸|odot;⊙|odsold;⦼|oelig;œ|"
    u"ofcir;⦿|ofr;\U0001d52c|ogon;˛|ograve;ò|ogt;⧁|ohbar;⦵|ohm;Ω|oint;∮|olarr;↺|olcir;⦾|olcross;⦻|"
    u"oline;‾|olt;⧀|omacr;ō|omega;ω|omicron;ο|omid;⦶|ominus;⊖|oopf;\U0001d560|opar;⦷|operp;⦹|"
    u"oplus;⊕|or;∨|orarr;↻|ord;⩝|order;ℴ|orderof;ℴ|ordf;\u00aa|ordm;\u00ba|origof;⊶|oror;⩖|"
    u"orslope;⩗|orv;⩛|oscr;ℴ|oslash;ø|osol;⊘|otilde;õ|otimes;⊗|otimesas;⨶|ouml;ö|ovbar;⌽|",
    u"|par;∥|para;¶|parallel;∥|parsim;⫳|parsl;⫽|part;∂|pcy;п|percnt;%|period;.|permil;‰|perp;⊥|"
    u"pertenk;‱|pfr;\U0001d52d|phi;φ|phiv;ϕ|phmmat;ℳ|phone;☎|pi;π|pitchfork;⋔|piv;ϖ|planck;ℏ|"
    u"planckh;ℎ|plankv;ℏ|plus;+|plusacir;⨣|plusb;⊞|pluscir;⨢|plusdo;∔|plusdu;⨥|pluse;⩲|plusmn;±|"
    u"plussim;⨦|plustwo;⨧|pm;±|pointint;⨕|popf;\U0001d561|pound;£|pr;≺|prE;⪳|prap;⪷|prcue;≼|pre;⪯|"
    u"prec;≺|precapprox;⪷|preccurlyeq;≼|preceq;⪯|precnapprox;⪹|precneqq;⪵|precnsim;⋨|precsim;≾|"
    u"prime;′|primes;ℙ|prnE;⪵|prnap;⪹|prnsim;⋨|prod;∏|profalar;⌮|profline;⌒|profsurf;⌓|prop;∝|"
    u"propto;∝|prsim;≾|prurel;⊰|pscr;\U0001d4c5|psi;ψ|puncsp;\u2008|",
    u"|qfr;\U0001d52e|qint;⨌|qopf;\U0001d562|qprime;⁗|qscr;\U0001d4c6|quaternions;ℍ|quatint;⨖|"
    u"quest;?|questeq;≟|quot;\"|",
    u"|rAarr;⇛|rArr;⇒|rAtail;⤜|rBarr;⤏|rHar;⥤|race;∽\u0331|racute;ŕ|radic;√|raemptyv;⦳|rang;⟩|"
    u"rangd;⦒|range;⦥|rangle;⟩|raquo;»|rarr;→|rarrap;⥵|rarrb;⇥|rarrbfs;⤠|rarrc;⤳|rarrfs;⤞|"
    u"rarrhk;↪|rarrlp;↬|rarrpl;⥅|rarrsim;⥴|rarrtl;↣|rarrw;↝|ratail;⤚|ratio;∶|rationals;ℚ|rbarr;⤍|"
    u"rbbrk;❳|rbrace;}|rbrack;]|rbrke;⦌|rbrksld;⦎|rbrkslu;⦐|rcaron;ř|rcedil;ŗ|rceil;⌉|rcub;}|"
    u"rcy;р|rdca;⤷|rdldhar;⥩|rdquo;”|rdquor;”|rdsh;↳|real;ℜ|realine;ℛ|realpart;ℜ|reals;ℝ|rect;▭|"
    u"reg;®|rfisht;⥽|rfloor;⌋|rfr;\U0001d52f|rhard;⇁|rharu;⇀|rharul;⥬|rho;ρ|rhov;ϱ|rightarrow;→|"
    u"rightarrowtail;↣|rightharpoondown;⇁|rightharpoonup;⇀|rightleftarrows;⇄|rightleftharpoons;⇌|"
    u"rightrightarrows;⇉|rightsquigarrow;↝|rightthreetimes;⋌|ring;˚|risingdotseq;≓|rlarr;⇄|"
    u"rlhar;⇌|rlm;\u200f|rmoust;⎱|rmoustache;⎱|rnmid;⫮|roang;⟭|roarr;⇾|robrk;⟧|ropar;⦆|"
    u"ropf;\U0001d563|roplus;⨮|rotimes;⨵|rpar;)|rpargt;⦔|rppolint;⨒|rrarr;⇉|rsaquo;›|"
    u"rscr;\U0001d4c7|rsh;↱|rsqb;]|rsquo;’|rsquor;’|rthree;⋌|rtimes;⋊|rtri;▹|rtrie;⊵|rtrif;▸|"
    u"rtriltri;⧎|ruluhar;⥨|rx;℞|",
    u"|sacute;ś|sbquo;‚|sc;≻|scE;⪴|scap;⪸|scaron;š|sccue;≽|sce;⪰|scedil;ş|scirc;ŝ|scnE;⪶|scnap;⪺|"
    u"scnsim;⋩|scpolint;⨓|scsim;≿|scy;с|sdot;⋅|sdotb;⊡|sdote;⩦|seArr;⇘|searhk;⤥|searr;↘|searrow;↘|"
    u"sect;§|semi;;|seswar;⤩|setminus;∖|setmn;∖|sext;✶|sfr;\U0001d530|sfrown;⌢|sharp;♯|shchcy;щ|"
    u"shcy;ш|shortmid;∣|shortparallel;∥|shy;\u00ad|sigma;σ|sigmaf;ς|sigmav;ς|sim;∼|simdot;⩪|"
    u"sime;≃|simeq;≃|simg;⪞|simgE;⪠|siml;⪝|simlE;⪟|simne;≆|simplus;⨤|simrarr;⥲|slarr;←|"
    u"smallsetminus;∖|smashp;⨳|smeparsl;⧤|smid;∣|smile;⌣|smt;⪪|smte;⪬|smtes;⪬\ufe00|softcy;ь|"
    u"sol;/|solb;⧄|solbar;⌿|sopf;\U0001d564|spades;♠|spadesuit;♠|spar;∥|sqcap;⊓|sqcaps;⊓\ufe00|"
    u"sqcup;⊔|sqcups;⊔\ufe00|sqsub;⊏|sqsube;⊑|sqsubset;⊏|sqsubseteq;⊑|sqsup;⊐|sqsupe;⊒|sqsupset;⊐|"
    u"sqsupseteq;⊒|squ;□|square;□|squarf;▪|squf;▪|srarr;→|sscr;\U0001d4c8|ssetmn;∖|ssmile;⌣|"
    u"sstarf;⋆|star;☆|starf;★|straightepsilon;ϵ|straightphi;ϕ|strns;¯|sub;⊂|subE;⫅|subdot;⪽|"
    u"sube;⊆|subedot;⫃|submult;⫁|subnE;⫋|subne;⊊|subplus;⪿|subrarr;⥹|subset;⊂|subseteq;⊆|"
    u"subseteqq;⫅|subsetneq;⊊|subsetneqq;⫋|subsim;⫇|subsub;⫕|subsup;⫓|succ;≻|succapprox;⪸|"
    u"succcurlyeq;≽|succeq;⪰|succnapprox;⪺|succneqq;⪶|succnsim;⋩|succsim;≿|sum;∑|sung;♪|sup;⊃|"
    u"sup1;¹|sup2;²|sup3;³|supE;⫆|supdot;⪾|supdsub;⫘|supe;⊇|supedot;⫄|suphsol;⟉|suphsub;⫗|"
    u"suplarr;⥻|supmult;⫂|supnE;⫌|supne;⊋|supplus;⫀|supset;⊃|supseteq;⊇|supseteqq;⫆|supsetneq;⊋|"
    u"supsetneqq;⫌|supsim;⫈|supsub;⫔|supsup;⫖|swArr;⇙|swarhk;⤦|swarr;↙|swarrow;↙|swnwar;⤪|szlig;ß|",
    u"|target;⌖|tau;τ|tbrk;⎴|tcaron;ť|tcedil;ţ|tcy;т|tdot;\u20db|telrec;⌕|tfr;\U0001d531|there4;∴|"
    u"therefore;∴|theta;θ|thetasym;ϑ|thetav;ϑ|thickapprox;≈|thicksim;∼|thinsp;\u2009|thkap;≈|"
    u"thksim;∼|thorn;þ|tilde;˜|times;×|timesb;⊠|timesbar;⨱|timesd;⨰|tint;∭|toea;⤨|top;⊤|topbot;⌶|"
    u"topcir;⫱|topf;\U0001d565|topfork;⫚|tosa;⤩|tprime;‴|trade;™|triangle;▵|triangledown;▿|"
    u"triangleleft;◃|trianglelefteq;⊴|triangleq;≜|triangleright;▹|trianglerighteq;⊵|tridot;◬|"
    u"trie;≜|triminus;⨺|triplus;⨹|trisb;⧍|tritime;⨻|trpezium;⏢|tscr;\U0001d4c9|tscy;ц|tshcy;ћ|"
    u"tstrok;ŧ|twixt;≬|twoheadleftarrow;↞|twoheadrightarrow;↠|",
    u"|uArr;⇑|uHar;⥣|uacute;ú|uarr;↑|ubrcy;ў|ubreve;ŭ|ucirc;û|ucy;у|udarr;⇅|udblac;ű|udhar;⥮|"
    u"ufisht;⥾|ufr;\U0001d532|ugrave;ù|uharl;↿|uharr;↾|uhblk;▀|ulcorn;⌜|ulcorner;⌜|ulcrop;⌏|"
    u"ultri;◸|umacr;ū|uml;¨|uogon;ų|uopf;\U0001d566|uparrow;↑|updownarrow;↕|upharpoonleft;↿|"
    u"upharpoonright;↾|uplus;⊎|upsi;υ|upsih;ϒ|upsilon;υ|upuparrows;⇈|urcorn;⌝|urcorner;⌝|urcrop;⌎|"
    u"uring;ů|urtri;◹|uscr;\U0001d4ca|utdot;⋰|utilde;ũ|utri;▵|utrif;▴|uuarr;⇈|uuml;ü|uwangle;⦧|",
    u"|vArr;⇕|vBar;⫨|vBarv;⫩|vDash;⊨|vangrt;⦜|varepsilon;ϵ|varkappa;ϰ|varnothing;∅|varphi;ϕ|"
    u"varpi;ϖ|varpropto;∝|varr;↕|varrho;ϱ|varsigma;ς|varsubsetneq;⊊\ufe00|varsubsetneqq;⫋\ufe00|"
    u"varsupsetneq;⊋\ufe00|varsupsetneqq;⫌\ufe00|vartheta;ϑ|vartriangleleft;⊲|vartriangleright;⊳|"
    u"vcy;в|vdash;⊢|vee;∨|veebar;⊻|veeeq;≚|vellip;⋮|verbar;||vert;||vfr;\U0001d533|vltri;⊲|"
    u"vnsub;⊂\u20d2|vnsup;⊃\u20d2|vopf;\U0001d567|vprop;∝|vrtri;⊳|vscr;\U0001d4cb|vsubnE;⫋\ufe00|"
    u"vsubne;⊊\ufe00|vsupnE;⫌\ufe00|vsupne;⊋\ufe00|vzigzag;⦚|",
    u"|wcirc;ŵ|wedbar;⩟|wedge;∧|wedgeq;≙|weierp;℘|wfr;\U0001d534|wopf;\U0001d568|wp;℘|wr;≀|"
    u"wreath;≀|wscr;\U0001d4cc|",
    u"|xcap;⋂|xcirc;◯|xcup;⋃|xdtri;▽|xfr;\U0001d535|xhArr;⟺|xharr;⟷|xi;ξ|xlArr;⟸|xlarr;⟵|xmap;⟼|"
    u"xnis;⋻|xodot;⨀|xopf;\U0001d569|xoplus;⨁|xotime;⨂|xrArr;⟹|xrarr;⟶|xscr;\U0001d4cd|xsqcup;⨆|"
    u"xuplus;⨄|xutri;△|xvee;⋁|xwedge;⋀|",
    u"|yacute;ý|yacy;я|ycirc;ŷ|ycy;ы|yen;¥|yfr;\U0001d536|yicy;ї|yopf;\U0001d56a|yscr;\U0001d4ce|"
    u"yucy;ю|yuml;ÿ|",
    u"|zacute;ź|zcaron;ž|zcy;з|zdot;ż|zeetrf;ℨ|zeta;ζ|zfr;\U0001d537|zhcy;ж|zigrarr;⇝|"
    u"zopf;\U0001d56b|zscr;\U0001d4cf|zwj;\u200d|zwnj;\u200c|",
};
// clang-format on

} // namespace

QString namedCharacter(QStringView name) {
    if (name.isEmpty())
        return {};
    const QString key = u"|%1;"_s.arg(name);
    for (const QStringView names : namesByLetter) {
        if (names[1] != name[0])
            continue;
        const qsizetype found = names.indexOf(key);
        if (found < 0)
            return {};
        const qsizetype start = found + key.size();
        // One unit at least: the character itself may be the separator.
        return names.mid(start, names.indexOf(u'|', start + 1) - start).toString();
    }
    return {};
}

} // namespace platform
