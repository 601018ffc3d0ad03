<?xml version="1.0"?>
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
<xsl:output cdata-section-elements="a"/><xsl:output cdata-section-elements="u:b" xmlns:u="urn:u"/><xsl:template match="/"><a>x&lt;]]&gt;<c>&lt;</c><xsl:value-of select="1"/><q:b xmlns:q="urn:u">&amp;</q:b></a></xsl:template>
</xsl:stylesheet>
