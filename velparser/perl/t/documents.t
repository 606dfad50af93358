# The samples of the documents: what they show is compared with what really happens.
#
# The word after the fence says what a block is: `rules` adds to the rules of the page
# (without any, the shipped rules apply), `vel` is command data. The block after it is
# compared with the result: `findings`, `saved` text, `changes` of the upgrade, the
# `message` of a failed load. `faults` are the faults of the rules so far.
use strict;
use warnings;
use feature 'signatures';
use Test::More;
use FindBin;
use lib "$FindBin::Bin/lib";

use VEL::Expression;
use VEL::Findings;
use VEL::Model;
use VEL::Rules::Source;
use VELTest;

sub page ($name) {
    open my $handle, '<', source_folder() . "/docs/$name" or die "$name: $!";
    return do { local $/ = undef; readline $handle };
}

my %answer = (
    findings => sub ($api, $error) { return $error // findings($api->{database}, 1) },
    saved    => sub ($api, $error) { return $error // formatted($api->{database}) },
    changes  => sub ($api, $error) { return $error // $api->updateSolverVEL . "\n" },
    message  => sub ($api, $error) { return ($error // 'no failure') . "\n" },
    faults   => sub ($api, $error) { return join '', map { "$_\n" } $api->{model}->rules->faults },
);

# The number of samples of each sort on the page.
sub run_page ($name) {
    my ($rules, $data, %count) = ('', '');
    my $text = page($name);
    while ($text =~ /^```(\w+)\n(.*?)^```$/gms) {
        my ($sort, $sample) = ($1, $2);
        my $line = 1 + (substr($text, 0, $-[0]) =~ tr/\n//);
        $count{$sort}++;
        if ($sort eq 'rules') {
            $rules .= $sample;
        }
        elsif ($sort eq 'vel') {
            check_vel($name, $line, $rules, $data = $sample);
        }
        else {
            my $api   = $rules ? api($rules) : with_libraries();
            my $error = $api->parseVELData(lines($data), 0);
            is $answer{$sort}->($api, $error), $sample, "$name:$line: $sort";
        }
    }
    return \%count;
}

# Data that is not followed by what is wrong with it is right.
sub check_vel ($name, $line, $rules, $sample) {
    my ($next) = page($name) =~ /^```vel\n\Q$sample\E```\n(?:(?!```).)*?^```(\w+)$/ms;
    return if defined $next && $next =~ /^(?:findings|message|changes|faults)$/;
    my $api = $rules ? api($rules) : with_libraries();
    is $api->parseVELData(lines($sample), 0), undef, "$name:$line: loads";
    is findings($api->{database}, 1), '', "$name:$line: is right";
    return;
}

subtest 'language.md' => sub {
    my $count = run_page('language.md');
    cmp_ok $count->{vel}, '>=', 5, 'samples';
};

subtest 'rules.md' => sub {
    my $count = run_page('rules.md');
    cmp_ok $count->{rules},    '>=', 5, 'rules';
    cmp_ok $count->{findings}, '>=', 4, 'findings';
    my $text = page('rules.md');
    ok index($text, "`$_`") >= 0, "the function $_ is listed" for @VEL::Expression::FUNCTIONS;
    ok index($text, "`$_`") >= 0, "the action $_ is listed" for sort keys %VEL::Rules::Source::ACTIONS;
};

# Words only, as a page may break its lines elsewhere.
sub words ($text) { return join ' ', split ' ', $text }

subtest 'findings.md' => sub {
    run_page('findings.md');
    my $text    = page('findings.md');
    my $rules   = page('rules.md');
    my @entries = VEL::Findings::entries();
    my ($group, $headings) = ('', '');
    for my $entry (@entries) {
        $headings .= "## $entry->{group}\n" if $entry->{group} ne $group;
        $headings .= "### $entry->{identifier}\n";
        $group = $entry->{group};
    }
    $text =~ s/^## Files that cannot be checked\n.*//ms;
    is join('', $text =~ /^##+ .*\n/gm), $headings, 'every identifier has its section, in the order of the table';
    for my $entry (@entries) {
        my $word = $entry->{identifier};
        my ($section) = $text =~ /^### \Q$word\E\n(.*?)(?=^##|\z)/ms;
        my $wanted = words($entry->{explanation});
        is substr(words($section // ''), 0, length $wanted), $wanted, "$word is explained in the words of the table";
        ok $section =~ /\[\Q$word\E\]$/m, "$word has a sample" if $word ne 'bad-rule';
        ok index($rules, "`$word`") >= 0, "rules.md states $word";
    }
};

done_testing;
