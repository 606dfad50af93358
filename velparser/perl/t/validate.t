# The validator: every finding about data, and the marks of valid objects.
use strict;
use warnings;
use feature 'signatures';
use Test::More;
use FindBin;
use Scalar::Util qw(weaken);
use lib "$FindBin::Bin/lib";

use VELTest;

my $rules = <<'TEXT';
RULES:
  Language Version = 5.7
  SINGLETON: FLOW
    Parents = /
    Optional Objects = DOMAIN, PROBE
  END
  OBJECT: DOMAIN
    Parents = FLOW
    Required Parameters = Kind
    Optional Parameters = Count, Speed, Ratio, Plain, Active, Sizes, Names, Bounded, Warm, Cool
    Optional Objects = BOUNDARY
    Required Objects = START
    PARAMETER: Kind
      Allowed Values = Fluid, Solid
    END
    PARAMETER: Count
      Type = Integer
      Lower Bound = 1
    END
    PARAMETER: Speed
      Type = Real
      Units = m s^-1
      Lower Bound = 0 [m s^-1]
      Upper Bound = 100 [m s^-1]
    END
    PARAMETER: Ratio
      Type = Real
      Units = 1
      Expressions = No
    END
    PARAMETER: Plain
      Type = Real
    END
    PARAMETER: Bounded
      Type = Real
      Units = m
      Lower Bound = 0 [m]
      Upper Bound = 1 [ft]
      Bounds Exclusive = Yes
    END
    PARAMETER: Warm
      Type = Real
      Units = C
      Lower Bound = 32 [F]
      Upper Bound = 293.15 [K]
    END
    PARAMETER: Cool
      Type = Real
      Units = C
      Upper Bound = 0 [C]
      Bounds Exclusive = Yes
    END
    PARAMETER: Active
      Type = Logical
    END
    PARAMETER: Sizes
      Type = Integer List
      Minimum Entries = 2
      Maximum Entries = 3
    END
    PARAMETER: Names
      Type = String List
      Allowed Values = All
      Allowed Objects = PROBE, START
    END
  END
  SINGLETON: START
    Parents = DOMAIN
    Maximum Count = 1
  END
  OBJECT: BOUNDARY
    Parents = DOMAIN
    Maximum Count = 2
    Required Parameters = Kind
    CASE: Flow
      If Parameter = Kind
      Is One Of = Inlet, Outlet
      Required Parameters = Rate
      Optional Objects = PROFILE
    END
  END
  SINGLETON: PROFILE
    Parents = BOUNDARY
    Free Parameters = Yes
  END
  OBJECT: PROBE
  END
  OBJECT: BOUNDARA
    Parents = FLOW
  END
  OBJECT: STRAY
    Parents = DOMAIN
  END
END
TEXT

# The findings about a domain with these lines in it, with all checks on.
sub in_domain ($text, $around = '') {
    my $database = database($rules, "FLOW:\nDOMAIN: d\nKind = Fluid\nSTART:\nEND\n$text\nEND\nEND\n$around");
    return findings($database, 1) =~ s{^/FLOW/DOMAIN:d(?:/|(?=:))}{}gmr;
}

subtest 'names' => sub {
    is findings(database($rules, "FLOW:\nDOMAIN: d\nEND\nEND")), <<'TEXT', 'what is missing';
/FLOW/DOMAIN:d: required parameter "Kind" is missing [missing-parameter]
/FLOW/DOMAIN:d: required object START is missing [missing-object]
TEXT
    is in_domain('Sped = 1 [m s^-1]'), <<'TEXT', 'an unknown parameter';
Sped: DOMAIN has no parameter "Sped"; did you mean Speed? [unknown-parameter]
TEXT
    is in_domain("BOUNDARY: w\nKind = Wall\nRate = 1\nEND"), <<'TEXT', 'a parameter of a case that does not apply';
BOUNDARY:w/Rate: "Rate" is only allowed when Kind = Inlet, Outlet [unknown-parameter]
TEXT
    is in_domain("BOUNDARY: w\nKind = Inlet\nPROFILE:\nAnything = 1\nEND\nEND"), <<'TEXT', 'a parameter that a case requires';
BOUNDARY:w: required parameter "Rate" is missing [missing-parameter]
TEXT
    is findings(database($rules, 'Loose = 1')), <<'TEXT', 'a parameter at the top level';
/Loose: "Loose" is not allowed at the top level; move it into an object [unknown-parameter]
TEXT
};

subtest 'places' => sub {
    is in_domain("BOUNDRY: w\nEND"), <<'TEXT', 'an unknown type';
BOUNDRY:w: Unknown object type "BOUNDRY"; did you mean BOUNDARY? [unknown-object]
TEXT
    is in_domain("NOTHING LIKE IT:\nFLOW:\nOdd = 1\nEND\nX: y\nDOMAIN: z\nEND\nEND\nEND"), <<'TEXT', 'nothing below an unknown type is checked';
NOTHING LIKE IT: Unknown object type "NOTHING LIKE IT"; correct the type or remove the object [unknown-object]
TEXT
    is in_domain("BOUNDARY:\nEND\nSTART: again\nEND"), <<'TEXT', 'name or no name';
BOUNDARY: BOUNDARY needs a name; write "BOUNDARY: name" [unknown-object]
START:again: START must not have a name; write "START:" [unknown-object]
TEXT
    is findings(database($rules, "DOMAIN: d\nKind = Gas\nSTART:\nEND\nEND")), <<'TEXT', 'a wrong place, and what is in it';
/DOMAIN:d: DOMAIN is not allowed at the top level; move it to FLOW [wrong-parent]
/DOMAIN:d/Kind: "Gas" is not allowed here; use one of Fluid, Solid [not-allowed]
TEXT
    is in_domain("BOUNDARY: w\nKind = Wall\nPROFILE:\nEND\nEND"), <<'TEXT', 'a place that a case would allow';
BOUNDARY:w/PROFILE: PROFILE is only allowed when its BOUNDARY has Kind = Inlet, Outlet [not-allowed]
TEXT
    is in_domain("STRAY: s\nEND"), <<'TEXT', 'a place that no list of the parent names';
STRAY:s: STRAY is not allowed in this DOMAIN; remove it [not-allowed]
TEXT
    is in_domain("BOUNDARX: w\nEND", "BOUNDARX: w\nEND"), <<'TEXT', 'of equally near types, the one that is allowed there';
BOUNDARX:w: Unknown object type "BOUNDARX"; did you mean BOUNDARY? [unknown-object]
/BOUNDARX:w: Unknown object type "BOUNDARX"; did you mean BOUNDARA? [unknown-object]
TEXT
    is in_domain("PROBE: p\nEND"), '', 'a type without parents is allowed anywhere';
    is in_domain(join "\n", map { "BOUNDARY: w$_\nKind = Wall\nEND" } 1 .. 4), <<'TEXT', 'too many';
BOUNDARY:w3: Only 2 BOUNDARY objects are allowed here; remove this one [too-many]
BOUNDARY:w4: Only 2 BOUNDARY objects are allowed here; remove this one [too-many]
TEXT
};

subtest 'values' => sub {
    my %expected = (
        'Active = maybe'    => 'Active: "maybe" is not a logical value; use Yes or No [wrong-type]',
        'Active = on'       => '',
        'Count = 2.5'       => 'Count: "2.5" is not a whole number; use a value such as 10 [wrong-type]',
        'Count = 0'         => 'Count: 0 is below the lower bound 1 [below-bound]',
        'Count = 7'         => '',
        'Count = 3 [m]'     => 'Count: Unit [m] is not allowed for a plain number; write 3 [wrong-unit]',
        'Plain = 2 [m]'     => 'Plain: Unit [m] is not allowed for a plain number; write 2 [wrong-unit]',
        'Plain = -1e-3'     => '',
        'Ratio = 0.5'       => '',
        'Ratio = 50 [%]'    => '',
        'Ratio = 1 [1]'     => '',
        'Ratio = 1 [rad]'   => 'Ratio: Unit [rad] has the wrong dimension; use [1] or a compatible unit [wrong-unit]',
        'Ratio = 1 + 1'     => 'Ratio: "1 + 1" is an expression, which is not allowed here; use a plain number [bad-expression]',
        'Ratio = much'      => 'Ratio: "much" is not a number; use a value such as 1.5 [wrong-type]',
        'Ratio = 0,5'       => 'Ratio: "0,5" is not a number; use a decimal point [wrong-type]',
        'Speed = 3'         => 'Speed: 3 has no unit; write it as 3 [m s^-1] [missing-unit]',
        'Speed = 3 [km h^-1]' => '',
        'Speed = 3 [m s-1]' => 'Speed: Unknown unit [m s-1]; use [m s^-1] or a compatible unit [wrong-unit]',
        'Speed = 3 [m'      => 'Speed: "3 [m" has no closing bracket; add "]" [wrong-unit]',
        'Speed = 3 [kg]'    => 'Speed: Unit [kg] has the wrong dimension; use [m s^-1] or a compatible unit [wrong-unit]',
        'Speed = -1 [m s^-1]' => 'Speed: -1 [m s^-1] is below the lower bound 0 [m s^-1] [below-bound]',
        'Speed = 361 [km h^-1]' => 'Speed: 361 [km h^-1] is above the upper bound 100 [m s^-1] [above-bound]',
        'Speed = 360 [km h^-1]' => '',
        'Speed = 3 m s^-1'  => 'Speed: "3 m s^-1" has its unit without brackets; write 3 [m s^-1] [wrong-type]',
        'Speed = 3 apples'  => 'Speed: "3 apples" is not a number; use a value such as 1 [m s^-1] [wrong-type]',
        'Speed = 3,5 [m s^-1]' => 'Speed: "3,5 [m s^-1]" is not a number; use a decimal point [wrong-type]',
        'Speed = 1e999 [m s^-1]'  => 'Speed: 1e999 [m s^-1] is above the upper bound 100 [m s^-1] [above-bound]',
        'Speed = -1e999 [m s^-1]' => 'Speed: -1e999 [m s^-1] is below the lower bound 0 [m s^-1] [below-bound]',
        'Speed = fast'      => 'Speed: "fast" is not a number; use a value such as 1 [m s^-1] [wrong-type]',
        'Speed = Inlet Speed' => '',
        'Speed = 2 * (Inlet Speed + 1 [m s^-1])' => '',
        'Speed = 2 * (Inlet Speed' => 'Speed: "2 * (Inlet Speed" has a "(" without a ")"; add ")" [bad-expression]',
        'Speed = 2 * Inlet Sped' => 'Speed: Unknown name "Inlet Sped" in "2 * Inlet Sped"; did you mean Inlet Speed? [bad-expression]',
        'Bounded = 0 [m]'   => 'Bounded: 0 [m] must be greater than the lower bound 0 [m] [below-bound]',
        'Bounded = 304.8 [mm]' => 'Bounded: 304.8 [mm] must be less than the upper bound 1 [ft] [above-bound]',
        'Bounded = 304.7 [mm]' => '',
        # 32 [F], reckoned in degrees Celsius, is some 1e-14 off 0.
        'Warm = 0 [C]'      => '',
        'Warm = 273.15 [K]' => '',
        'Warm = 32 [F]'     => '',
        'Warm = -1e-9 [C]'  => 'Warm: -1e-9 [C] is below the lower bound 32 [F] [below-bound]',
        'Warm = 68 [F]'     => '',
        'Warm = 20.1 [C]'   => 'Warm: 20.1 [C] is above the upper bound 293.15 [K] [above-bound]',
        'Cool = 31.9 [F]'   => '',
        'Cool = 32 [F]'     => 'Cool: 32 [F] must be less than the upper bound 0 [C] [above-bound]',
        'Cool = 273.15 [K]' => 'Cool: 273.15 [K] must be less than the upper bound 0 [C] [above-bound]',
        'Sizes = 1'         => 'Sizes: Expected at least 2 entries, found 1 [too-few-entries]',
        'Sizes = 1, 2, 3, 4' => 'Sizes: Expected at most 3 entries, found 4 [too-many-entries]',
        'Sizes = 1, b, 2.5' => qq(Sizes: "b" is not a whole number; use a value such as 10 [wrong-type]\nSizes: "2.5" is not a whole number; use a value such as 10 [wrong-type]),
        'Names = All, p1, START' => '',
        'Names = P1'        => 'Names: There is no PROBE or START named "P1"; use one of All, p1, START; did you mean p1? [no-such-object]',
        'Names = elsewhere' => 'Names: There is no PROBE or START named "elsewhere"; use one of All, p1, START [no-such-object]',
    );
    my $around = "PROBE: p1\nEND\nLIBRARY:\nEXPRESSIONS:\nInlet Speed = 1 [m s^-1]\nEND\nEND";
    for my $text (sort keys %expected) {
        is in_domain($text, $around), $expected{$text} && "$expected{$text}\n", $text;
    }
};

subtest 'units and bounds are checked only while these checks are on' => sub {
    my $database = database($rules, "FLOW:\nDOMAIN: d\nKind = Fluid\nSpeed = -1\nCount = 0\nSTART:\nEND\nEND\nEND");
    my $validator = VEL::Validate->new($database);
    my $look = sub { return $validator->validateObject('/FLOW/DOMAIN:d') // '' };
    is $look->(), '', 'both are off at first';
    is $database->isValid('/FLOW/DOMAIN:d'), 1, 'so the object is marked';
    is $validator->setUnitsChecking('1'), undef, 'switched on';
    is $database->isValid('/FLOW/DOMAIN:d'), 0, 'which removes the marks';
    is $look->(), "/FLOW/DOMAIN:d/Speed: -1 has no unit; write it as -1 [m s^-1] [missing-unit]", 'units';
    is $validator->setBoundsChecking('1'), undef, 'bounds too';
    is $look->(), <<'TEXT' =~ s/\n\z//r, 'a value without a unit is not compared with its bounds';
/FLOW/DOMAIN:d/Speed: -1 has no unit; write it as -1 [m s^-1] [missing-unit]
/FLOW/DOMAIN:d/Count: 0 is below the lower bound 1 [below-bound]
TEXT
    $validator->setUnitsChecking('0');
    is $look->(), <<'TEXT' =~ s/\n\z//r, 'units off again';
/FLOW/DOMAIN:d/Speed: -1 is below the lower bound 0 [m s^-1] [below-bound]
/FLOW/DOMAIN:d/Count: 0 is below the lower bound 1 [below-bound]
TEXT
};

subtest 'marks' => sub {
    my $database = database($rules, <<'TEXT');
PROBE: p
END
FLOW:
  DOMAIN: d
    Kind = Fluid
    Names = p
    START:
    END
    BOUNDARY: b
      Kind = Inlet
      Rate = 1
      PROFILE:
      END
    END
  END
END
TEXT
    my $validator = VEL::Validate->new($database);
    my $look  = sub ($path) { return $validator->validateObject($path) // '' };
    my $marks = sub (@paths) { return join ' ', map { $database->isValid($_) } @paths };
    my $d = '/FLOW/DOMAIN:d';
    is $look->($_), '', "$_ is right" for all_paths($database);
    is $marks->($d, "$d/Kind", "$d/Names", "$d/BOUNDARY:b"), '1 3 3 1', 'objects and their parameters are marked';

    $database->setStringValue("$d/Kind", 'Gas');
    is $marks->($d, "$d/Kind"), '0 2', 'a change removes the mark';
    is $look->($d), qq($d/Kind: "Gas" is not allowed here; use one of Fluid, Solid [not-allowed]), 'a finding';
    is $marks->($d), '0', 'no mark with a finding';
    is $look->($d), qq($d/Kind: "Gas" is not allowed here; use one of Fluid, Solid [not-allowed]), 'it is reported again';
    $database->setStringValue("$d/Kind", 'Solid');
    is $validator->validateParam("$d/Kind"), undef, 'fixed';
    is $marks->("$d/Kind"), 3, 'the parameter is marked';
    is $look->($d), '', 'the object is correct again';

    $database->setStringValue("$d/BOUNDARY:b/Kind", 'Wall');
    $look->("$d/BOUNDARY:b");
    is $marks->("$d/BOUNDARY:b/PROFILE"), 0, 'a case that no longer applies: the child is checked again';
    $database->setStringValue("$d/BOUNDARY:b/Kind", 'Inlet');
    is $look->($_), '', "$_ is right" for "$d/BOUNDARY:b", "$d/BOUNDARY:b/PROFILE";

    $database->deleteParam("$d/BOUNDARY:b/Rate");
    is $marks->("$d/BOUNDARY:b"), 0, 'deleting a parameter removes the mark of its object';
    like $look->("$d/BOUNDARY:b"), qr/missing-parameter/, 'and it is reported as missing';

    $database->createObject('/FLOW/PROBE:p', 0);
    is $marks->('/FLOW', $d), '1 1', 'adding an object removes no mark';
    $database->deleteObj('/FLOW/PROBE:p');
    $look->($d);
    $database->deleteObj('/PROBE:p');
    is $marks->("$d/BOUNDARY:b/PROFILE"), 1, 'deleting an object keeps the marks of others';
    is $marks->($d), 0, 'and removes the marks of those that name it';
    like $look->($d), qr/no-such-object/, 'which now name an object that does not exist';

    $database->loadLibraryData(lines("RULES:\nOBJECT: DOMAIN\nRequired Parameters = Kind, Count\nEND\nEND"));
    is $look->('/FLOW'), '', 'after a change of the rules';
    is $marks->("$d/START"), 0, 'there are no marks';
};

subtest 'the methods of the validator' => sub {
    my $validator = VEL::Validate->new(database($rules, "FLOW:\nDOMAIN: d\nKind = Fluid\nSTART:\nEND\nEND\nEND"));
    is $validator->validateObject('/FLOW/DOMAIN:x'), '/FLOW/DOMAIN:x: There is no object with this path; correct the path [no-such-object]',
        'an object that is not there';
    is $validator->validateObject('/FLOW/DOMAIN:d/Kind'),
        '/FLOW/DOMAIN:d/Kind: This is a parameter, not an object; give the path of an object [wrong-type]', 'a parameter';
    is $validator->validateParam('/FLOW/DOMAIN:d/Nix'),
        '/FLOW/DOMAIN:d/Nix: There is no parameter with this path; correct the path [no-such-object]', 'a parameter that does not exist';
    is $validator->validateParam('/FLOW/DOMAIN:d'), '/FLOW/DOMAIN:d: There is no parameter with this path; correct the path [no-such-object]',
        'an object in place of a parameter';
    is $validator->validateObject(' /FLOW//DOMAIN: d '), undef, 'a path in another form';
    is $validator->validateObject(' /FLOW//DOMAIN: x '), '/FLOW/DOMAIN:x: There is no object with this path; correct the path [no-such-object]',
        'which a finding gives in the usual one';
    is $validator->validateParam(' /FLOW//DOMAIN: d/Nix'),
        '/FLOW/DOMAIN:d/Nix: There is no parameter with this path; correct the path [no-such-object]', 'also for a parameter';
};

subtest 'maximum counts, after changes of data and rules' => sub {
    for my $boxes (3, 200) {
        my $database  = database("RULES:\nOBJECT: BOX\nMaximum Count = 2\nEND\nEND",
            join "\n", map { ("BOX: b$_", 'END') } 1 .. $boxes);
        my $validator = VEL::Validate->new($database);
        my $said      = sub ($box) { return $validator->validateObject("/BOX:$box") // 'right' };
        is $said->('b2'), 'right', "the second of $boxes";
        is $said->('b3'), '/BOX:b3: Only 2 BOX objects are allowed here; remove this one [too-many]', 'the third';
        $database->deleteObj('/BOX:b1');
        is $said->('b3'), 'right', 'the third, after the first was deleted';
        $database->createObject('/BOX:new', 0);
        like $said->('new'), qr/too-many/, 'a new object';
        $database->setStringValue('/RULES/OBJECT:BOX/Maximum Count', '1');
        like $said->('b3'), qr/Only 1 BOX is/, 'another rule';
        $database->setStringValue('/RULES/OBJECT:BOX/Maximum Count', '0');
        is $said->('b2'), 'right', 'or a maximum of 0, which is a mistake and ignored';
    }
};

subtest 'language version' => sub {
    my %finding = ('5.6' => 0, '5.7' => 0, '5.7.0' => 0, '5.10' => 1, '6' => 1);
    for my $version (sort keys %finding) {
        my $expected = $finding{$version}
            ? "/LANGUAGE/Version: Version $version is newer than version 5.7 of the rules; use newer rule libraries [newer-version]\n"
            : '';
        is findings(database($rules, "LANGUAGE:\nVersion = $version\nEND")), $expected, "version $version";
    }
};

subtest 'without rules there are no findings' => sub {
    is findings(database('', "ANY: thing\nOdd = 1\nEND\nLoose = 1")), '', 'for any data';
};

subtest 'a mark depends on the expressions that a value names' => sub {
    for my $value ('Inlet Speed', '2 * Inlet Speed') {
        my $database = database($rules, "LIBRARY:\nEXPRESSIONS:\nInlet Speed = 1 [m s^-1]\nEND\nEND\n"
                . "FLOW:\nDOMAIN: d\nKind = Fluid\nSpeed = $value\nSTART:\nEND\nEND\nEND");
        my $validator = validator($database);
        is $validator->validateObject('/FLOW/DOMAIN:d'), undef, "$value: is known";
        $database->deleteParam('/LIBRARY/EXPRESSIONS/Inlet Speed');
        is $database->isValid('/FLOW/DOMAIN:d'), 0, 'deleting the expression removes the mark';
        like $validator->validateObject('/FLOW/DOMAIN:d'), qr/Speed: .*"\Q$value\E"/, 'and there is a finding';
    }
};

subtest 'a finding removes a mark that another caller set' => sub {
    my $database = database($rules, "FLOW:\nDOMAIN: d\nEND\nEND");
    my $validator = VEL::Validate->new($database);
    $database->setValid('/FLOW/DOMAIN:d', 1);
    like $validator->validateObject('/FLOW/DOMAIN:d'), qr/missing-parameter/, 'a finding';
    is $database->isValid('/FLOW/DOMAIN:d'), 0, 'no mark';
};

subtest 'new rules have an effect at once' => sub {
    my $expected = '/X:x/PROBE:p/Odd: PROBE has no parameter "Odd"; correct the name or remove the parameter [unknown-parameter]';
    my $look = sub ($text) {
        my $database  = database($rules, "X: x\nPROBE: p\nOdd = 1\nEND\nEND");
        my $validator = VEL::Validate->new($database);
        is $validator->validateObject('/X:x/PROBE:p'), undef, "$text: nothing below an unknown type is reported";
        $database->loadLibraryData(lines("RULES:\nOBJECT: X\nEND\nEND"));
        is $validator->validateObject('/X:x/PROBE:p'), $expected, "$text: the type is known";
        $database->deleteObj('/X:x/PROBE:p');
        $database->createObject('/X:x/DOMAIN:d', 0);
        $database->createParam('/X:x/DOMAIN:d/Names', 'q');
        like $validator->validateParam('/X:x/DOMAIN:d/Names'), qr/There is no PROBE or START named "q"/,
            "$text: names of objects";
        $database->createObject('/X:x/PROBE:q', 0);
        is $validator->validateParam('/X:x/DOMAIN:d/Names'), undef, "$text: and new ones";
    };
    $look->('heard');
    no warnings 'redefine';
    local *VEL::Parser::Lite::addChangeHandler = sub { die "not for this one\n" };
    $look->('not heard');
};

subtest 'nothing keeps a validator alive' => sub {
    my $database  = database($rules, "FLOW:\nDOMAIN: d\nKind = Fluid\nNames = x\nEND\nEND");
    my $validator = validator($database);
    $validator->validateObject($_) for all_paths($database);
    weaken(my $seen = $validator);
    undef $validator;
    is $seen, undef, 'by its models and handlers';
    is $database->deleteObj('/FLOW'), undef, 'and nothing fails when something is deleted';
};

subtest 'deep nesting' => sub {
    my $depth = 10_000;
    my @data = ((map { "PROBE: p$_" } 1 .. $depth), ('END') x $depth);
    my $database = database($rules, join "\n", @data);
    my $path = '';
    my $validator = VEL::Validate->new($database);
    for my $level (1 .. $depth) {
        $path .= "/PROBE:p$level";
        last if !is_quiet($validator, $path);
    }
    is $database->isValid($path), 1, 'is checked to the last level';
    my @said;
    local $SIG{__WARN__} = sub { push @said, @_ };
    $validator->setUnitsChecking(1);
    is $database->isValid($path), 0, 'and removed again';
    is "@said", '', 'without a warning';
};

sub is_quiet ($validator, $path) { return !defined $validator->validateObject($path) }

done_testing;
